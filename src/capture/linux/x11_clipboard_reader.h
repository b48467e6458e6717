#pragma once

#include <memory>
#include <string>

#include "base/main_queue.h"
#include "base/serial_queue.h"
#include "capture/clipboard_reader.h"

typedef struct _XDisplay Display;

namespace tevra {

// The X11 CLIPBOARD read over a connection of its own on its own thread:
// every target the owner lists, each converted into a property of a window
// of ours (with INCR for large data), named as Qt names formats so that a
// restore through QClipboard offers them again. An owner that does not
// answer is given up on after a few seconds with what was read by then.
class X11ClipboardReader : public ClipboardReader {
public:
    // An empty displayName means $DISPLAY.
    X11ClipboardReader(MainQueue& queue, std::string displayName = {});
    ~X11ClipboardReader() override;

    void read(std::function<void(ClipboardSnapshot)> done) override;

    // How long one snapshot may take in all, and one conversion.
    static constexpr int totalWaitMs = 3000;
    static constexpr int conversionWaitMs = 1000;

private:
    ClipboardSnapshot readNow();

    MainQueue& queue_;
    const std::string displayName_;
    // Touched only on the queue's thread.
    Display* display_ = nullptr;
    unsigned long window_ = 0;
    SerialQueue work_{"tevra.clipboard"};
};

}  // namespace tevra
