#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tevra {

// How the next paste of the clipboard queue behaves.
enum class PasteMode { all, oneByOne };

namespace PasteModes {

inline constexpr std::array<PasteMode, 2> allCases = {PasteMode::all, PasteMode::oneByOne};

// "all", "oneByOne": the form in which a mode is written down.
std::string_view rawValue(PasteMode mode);
std::optional<PasteMode> fromRawValue(std::string_view raw);
// What the notices call it: "All at once", "One by one".
std::string_view label(PasteMode mode);
PasteMode toggled(PasteMode mode);

}  // namespace PasteModes

// One text of the queue, with the application it was copied in when the
// desktop named one.
struct ClipboardItem {
    std::string text;
    std::optional<std::string> app;
    std::chrono::system_clock::time_point at = std::chrono::system_clock::now();

    bool operator==(const ClipboardItem&) const = default;
};

// The clipboard queue: texts gathered from the clipboard one key press at a
// time, pasted later all at once or one by one. First in, first out, in
// memory only: the queue ends with the program. Main thread only.
class ClipboardStack {
public:
    static constexpr std::size_t maxItems = 50;
    static constexpr std::string_view defaultSeparator = "\n";

    explicit ClipboardStack(PasteMode mode = PasteMode::all) : mode_(mode) {}

    // Oldest first.
    const std::vector<ClipboardItem>& items() const { return items_; }
    PasteMode mode() const { return mode_; }
    std::size_t count() const { return items_.size(); }
    bool isEmpty() const { return items_.empty(); }

    // Adds the text as it is, unless it is blank or the same as the newest
    // item's; beyond maxItems the oldest go. True if an item was added.
    bool push(std::string text, std::optional<std::string> app = std::nullopt,
              std::chrono::system_clock::time_point at = std::chrono::system_clock::now());
    // All items joined by the separator, emptying the queue; or, one by one,
    // the oldest item, taken off. None when the queue is empty.
    std::optional<std::string> nextPaste(std::string_view separator);
    // What nextPaste would give, with nothing taken.
    std::optional<std::string> preview(std::string_view separator) const;
    // The other mode, which is then returned; the items stay.
    PasteMode toggleMode();
    void clear() { items_.clear(); }
    // False for an index outside the queue.
    bool remove(long index);

private:
    std::string joined(std::string_view separator) const;

    std::vector<ClipboardItem> items_;
    PasteMode mode_;
};

}  // namespace tevra
