#pragma once

#include <QMetaObject>
#include <atomic>
#include <memory>
#include <vector>

#include "capture/clipboard.h"
#include "capture/clipboard_reader.h"

class QClipboard;

namespace tevra {

// The desktop's clipboard (the X11 CLIPBOARD selection) through QClipboard.
// It holds one item; a snapshot of several items is restored as one, the first
// item's data winning where two offer the same format. Main thread only, with
// a running Qt application. With a reader, snapshotLater reads another
// owner's data off the main thread, and prefetch reads it ahead; a prefetched
// snapshot serves as long as the clipboard has not changed since.
class QtClipboard : public Clipboard {
public:
    // Clipboard managers (Klipper and those that follow it) keep nothing that
    // carries this format with the value "secret".
    static constexpr const char* passwordManagerHint = "x-kde-passwordManagerHint";

    explicit QtClipboard(std::shared_ptr<ClipboardReader> reader = {});
    ~QtClipboard() override;
    QtClipboard(const QtClipboard&) = delete;
    QtClipboard& operator=(const QtClipboard&) = delete;

    ClipboardSnapshot snapshot() override;
    void snapshotLater(std::function<void(ClipboardSnapshot)> done) override;
    void prefetch() override;
    void setText(std::string_view text, bool transient) override;
    void setPrimaryText(std::string_view text) override;
    void restore(const ClipboardSnapshot& snapshot) override;
    std::optional<std::string> text() override;
    void textLater(std::function<void(std::optional<std::string>)> done) override;
    std::int64_t changeCount() override;

private:
    // One read by the reader, and whoever waits for it.
    struct Read {
        std::int64_t atChange = 0;
        bool done = false;
        ClipboardSnapshot snapshot;
        std::vector<std::function<void(ClipboardSnapshot)>> waiting;
    };
    std::shared_ptr<Read> startRead();

    QClipboard* clipboard_;
    std::shared_ptr<ClipboardReader> reader_;
    std::shared_ptr<Read> read_;
    std::shared_ptr<std::atomic<std::int64_t>> changes_;
    QMetaObject::Connection watch_;
};

}  // namespace tevra
