#pragma once

#include <QMetaObject>
#include <atomic>
#include <memory>

#include "capture/clipboard.h"

class QClipboard;

namespace tevra {

// The desktop's clipboard (the X11 CLIPBOARD selection) through QClipboard.
// It holds one item; a snapshot of several items is restored as one, the first
// item's data winning where two offer the same format. Main thread only, with
// a running Qt application.
class QtClipboard : public Clipboard {
public:
    // Clipboard managers (Klipper and those that follow it) keep nothing that
    // carries this format with the value "secret".
    static constexpr const char* passwordManagerHint = "x-kde-passwordManagerHint";

    QtClipboard();
    ~QtClipboard() override;
    QtClipboard(const QtClipboard&) = delete;
    QtClipboard& operator=(const QtClipboard&) = delete;

    ClipboardSnapshot snapshot() override;
    void setText(std::string_view text, bool transient) override;
    void setPrimaryText(std::string_view text) override;
    void restore(const ClipboardSnapshot& snapshot) override;
    std::optional<std::string> text() override;
    std::int64_t changeCount() override;

private:
    QClipboard* clipboard_;
    std::shared_ptr<std::atomic<std::int64_t>> changes_;
    QMetaObject::Connection watch_;
};

}  // namespace tevra
