#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tevra {

// One clipboard item: every format it offers, as (MIME type, bytes), in the
// order the owner listed them.
struct ClipboardData {
    std::vector<std::pair<std::string, std::string>> formats;

    bool operator==(const ClipboardData&) const = default;
};

// Everything the clipboard held at one moment; empty when it held nothing.
using ClipboardSnapshot = std::vector<ClipboardData>;

// The system clipboard, as the inserter and the clipboard tools see it.
class Clipboard {
public:
    virtual ~Clipboard() = default;

    // Every item with every format whose data can be read; a format that gives
    // no data is left out. The owner of the clipboard is another program, so
    // this may take as long as it takes that program to answer.
    virtual ClipboardSnapshot snapshot() = 0;
    // The same, without holding up the caller: done gets the snapshot on the
    // main queue once it has been read.
    virtual void snapshotLater(std::function<void(ClipboardSnapshot)> done) { done(snapshot()); }
    // A paste is coming soon: what the clipboard holds may be read ahead, so
    // that snapshotLater can answer at once.
    virtual void prefetch() {}
    // Replaces the whole clipboard by one plain-text item. A transient text is
    // marked so that clipboard managers do not keep it in their history.
    virtual void setText(std::string_view text, bool transient) = 0;
    // Puts plain text in the primary selection, which some terminals paste
    // instead of the clipboard. The selection is not restored afterwards.
    virtual void setPrimaryText(std::string_view text) = 0;
    // Replaces the whole clipboard by the snapshot's items; an empty snapshot
    // leaves it empty.
    virtual void restore(const ClipboardSnapshot& snapshot) = 0;
    // The plain text on the clipboard, if it has any, with line feeds for
    // line ends.
    virtual std::optional<std::string> text() = 0;
    // The same, without holding up the caller on the clipboard's owner: done
    // gets it on the main queue.
    virtual void textLater(std::function<void(std::optional<std::string>)> done) { done(text()); }
    // Grows by at least one whenever the clipboard's contents change, by this
    // program or another.
    virtual std::int64_t changeCount() = 0;
};

}  // namespace tevra
