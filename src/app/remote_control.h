#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/app_delegate.h"
#include "base/main_queue.h"

namespace tevra {

// What may be asked of a running Tevra from outside it (the session bus, and
// through it a desktop shortcut, a script, tevractl): each request does
// exactly what its key does, or is refused at once with the reason. An
// accepted request runs on the main queue after the answer has gone out, as a
// key press would.
class RemoteControl {
public:
    // None: accepted. Otherwise the reason for the refusal, for the caller.
    using Answer = std::optional<std::string>;

    RemoteControl(MainQueue& queue, std::shared_ptr<AppDelegate> delegate);

    Answer showWindow();
    Answer startCapture(int slot);
    Answer finishCapture();
    // The talk key's tap: a capture in the slot, or the end of the one running.
    Answer toggleCapture(int slot);
    Answer cancelCapture();
    Answer translateSelection();
    Answer translateClipboard();
    Answer selectText();
    Answer clipQueueAdd();
    Answer clipQueuePaste();
    Answer clipQueueMode();
    Answer startNotes(const std::string& app);
    Answer stopNotes();

    // "idle", "recording" or "processing".
    std::string state() const;
    // "idle", "detected", "recording" or "processing".
    std::string notetakerState() const;

private:
    // Runs the delegate's operation on the main queue, holding it weakly.
    Answer later(void (AppDelegate::*operation)());
    Answer refusedIfNoVoice(int slot) const;

    MainQueue& queue_;
    std::shared_ptr<AppDelegate> delegate_;
};

}  // namespace tevra
