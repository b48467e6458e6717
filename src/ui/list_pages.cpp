#include "ui/list_pages.h"

#include "base/text.h"
#include "store/history_store.h"

namespace tevra {

bool DictionaryPage::add(UIState& state) {
    const std::string phrase = text::trimBlanks(input);
    if (phrase.empty()) {
        return false;
    }
    if (HistoryStore* store = state.store()) {
        store->addDictionary(phrase);
    }
    input.clear();
    state.reload();
    return true;
}

void DictionaryPage::remove(UIState& state, const std::string& phrase) {
    if (HistoryStore* store = state.store()) {
        store->deleteDictionary(phrase);
    }
    state.reload();
}

bool ReplacementsPage::add(UIState& state) {
    if (from.empty()) {
        return false;
    }
    if (HistoryStore* store = state.store()) {
        store->addReplacement(from, to, isRegex);
    }
    from.clear();
    to.clear();
    isRegex = false;
    state.reload();
    return true;
}

void ReplacementsPage::remove(UIState& state, const Replacement& replacement) {
    if (HistoryStore* store = state.store()) {
        store->deleteReplacement(replacement.from);
    }
    state.reload();
}

bool SnippetsPage::canAdd() const {
    return !text::trimBlanks(trigger).empty() && !text::trimBlanks(expansion).empty();
}

bool SnippetsPage::add(UIState& state) {
    if (!canAdd()) {
        return false;
    }
    if (HistoryStore* store = state.store()) {
        store->addSnippet(text::trimBlanks(trigger), text::trimBlanks(expansion));
    }
    trigger.clear();
    expansion.clear();
    state.reload();
    return true;
}

void SnippetsPage::remove(UIState& state, const SnippetItem& snippet) {
    if (HistoryStore* store = state.store()) {
        store->deleteSnippet(snippet.trigger);
    }
    state.reload();
}

std::string TonesPage::placeholder(std::string_view kind) {
    return kind == "title" ? "window title contains\u2026 e.g. Gmail"
                           : "app id contains\u2026 e.g. telegram";
}

std::string TonesPage::badge(std::string_view kind) {
    return kind == "title" ? "window title" : "app id";
}

std::string TonesPage::badgeHelp(std::string_view kind) {
    return kind == "title" ? "Matched against the active window's title"
                           : "Matched against the app's window class (WM_CLASS)";
}

bool TonesPage::canAdd() const {
    return !text::trimBlanks(pattern).empty();
}

bool TonesPage::add(UIState& state) {
    if (!canAdd()) {
        return false;
    }
    if (HistoryStore* store = state.store()) {
        store->addToneProfile(text::trimBlanks(pattern), tone, kind);
    }
    pattern.clear();
    state.reload();
    return true;
}

void TonesPage::remove(UIState& state, const ToneItem& item) {
    if (HistoryStore* store = state.store()) {
        store->deleteToneProfile(item.pattern);
    }
    state.reload();
}

}  // namespace tevra
