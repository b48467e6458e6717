#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ui/ui_state.h"

// The four list pages: what each one's inputs hold, when adding is possible,
// and what adding and removing write. Adding writes to the store, empties the
// inputs and reloads; removing writes and reloads. Without a store the write
// is skipped and the rest goes on.
namespace tevra {

inline constexpr const char* removeLabel = "Remove";

struct DictionaryPage {
    static constexpr const char* title = "Dictionary";
    static constexpr const char* subtitle =
        "Exact spellings Tevra always uses \u2014 brands, names, SKUs.";
    static constexpr const char* placeholder = "Add a phrase, e.g. Kestrum Cloud";
    static constexpr const char* addLabel = "Add";

    std::string input;

    // The input trimmed of blanks; nothing happens (and the input stays) when
    // that is empty. True when a phrase was added.
    bool add(UIState& state);
    void remove(UIState& state, const std::string& phrase);
};

struct ReplacementsPage {
    static constexpr const char* title = "Replacements";
    static constexpr const char* subtitle =
        "Whenever Tevra hears the left side, it types the right side.";
    static constexpr const char* fromPlaceholder = "when I say\u2026";
    static constexpr const char* toPlaceholder = "type this";
    static constexpr const char* regexLabel = "regex";
    static constexpr const char* addLabel = "Add";

    std::string from;
    std::string to;
    bool isRegex = false;

    // Needs a left side; neither side is trimmed, and an empty right side
    // deletes what was heard.
    bool add(UIState& state);
    void remove(UIState& state, const Replacement& replacement);
};

struct SnippetsPage {
    static constexpr const char* title = "Snippets";
    static constexpr const char* subtitle =
        "Say the trigger phrase alone and Tevra expands it in full.";
    static constexpr const char* triggerPlaceholder = "trigger \u2014 say\u2026";
    static constexpr const char* expansionPlaceholder = "expands to\u2026";
    static constexpr const char* addLabel = "Add snippet";
    static constexpr const char* emptyTitle = "Say less, type more.";
    static constexpr const char* emptyHint =
        "e.g. trigger \u201cmy address\u201d \u2192 your full postal address.";

    std::string trigger;
    std::string expansion;

    bool canAdd() const;
    bool add(UIState& state);
    void remove(UIState& state, const SnippetItem& snippet);
};

struct TonesPage {
    static constexpr const char* title = "App tones";
    static constexpr const char* subtitle =
        "Match how you write per context \u2014 casual in chat, formal in Mail. Match on the app "
        "itself, or on a window's title.";
    static constexpr const char* kindNote =
        "\u201cWindow title\u201d matches text in the active window \u2014 so Gmail open inside "
        "Chrome gets its own tone, separate from the browser itself.";
    static constexpr const char* addLabel = "Add tone";
    static constexpr const char* emptyTitle = "A voice for every room.";
    static constexpr const char* emptyHint =
        "e.g. app \u201ctelegram\u201d \u2192 casual, title \u201cGmail\u201d \u2192 formal.";

    struct Choice {
        const char* label;
        const char* value;
    };
    static constexpr Choice kinds[] = {{"App id", "app"}, {"Window title", "title"}};
    static constexpr const char* toneChoices[] = {"casual", "formal", "plain", "technical"};

    std::string kind = "app";
    std::string pattern;
    std::string tone = "casual";

    // The pattern's placeholder for a kind.
    static std::string placeholder(std::string_view kind);
    // A row's badge and its help text.
    static std::string badge(std::string_view kind);
    static std::string badgeHelp(std::string_view kind);

    bool canAdd() const;
    // Keeps both selectors; only the pattern is emptied.
    bool add(UIState& state);
    // Removes every row with the pattern, whatever its kind.
    void remove(UIState& state, const ToneItem& tone);
};

}  // namespace tevra
