#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/main_queue.h"
#include "capture/clipboard.h"
#include "capture/key_injector.h"
#include "capture/secure_input.h"

namespace tevra {

// Reads the text selected in whichever application has the focus, the way a
// user would: the copy chord to that application, a short wait for the
// clipboard to change, the text taken, and the clipboard put back as it was.
// A key the user still holds from the hotkey is waited for first, as the
// paste waits for it.
//
// The waits run on main-queue timers rather than blocking, so that the event
// loop can hear of the clipboard's new owner. Main thread only.
class FocusedSelection {
public:
    static constexpr int attempts = 25;
    static constexpr double attemptIntervalSec = 0.01;

    using Completion = std::function<void(std::optional<std::string> text)>;

    FocusedSelection(MainQueue& queue, std::shared_ptr<Clipboard> clipboard,
                     std::shared_ptr<KeyInjector> keys, std::shared_ptr<SecureInput> secureInput);

    // Returns at once; completion runs later on the main queue with the
    // selected text untrimmed, or nullopt when nothing (or only white space)
    // was selected, the copy brought no plain text, or keys cannot be sent
    // or a held key stayed down (then the clipboard is not touched at all).
    void read(Completion completion);

private:
    MainQueue& queue_;
    std::shared_ptr<Clipboard> clipboard_;
    std::shared_ptr<KeyInjector> keys_;
    std::shared_ptr<SecureInput> secureInput_;
};

}  // namespace tevra
