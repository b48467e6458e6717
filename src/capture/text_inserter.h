#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "base/main_queue.h"
#include "capture/clipboard.h"
#include "capture/key_injector.h"
#include "capture/secure_input.h"

namespace tevra {

// Puts finished text at the cursor. Text always travels by the clipboard and a
// synthetic paste chord: the clipboard is snapshot, the text set, the chord
// posted 30 ms later, and the snapshot put back 1.2 s after that, so that
// whatever the user had copied (an image, a file) comes back. A chord is
// never sent while the user holds a modifier that would turn it into another
// chord: it waits up to 0.6 s for the key to come up. Main thread only; the
// clipboard's owner is never waited for on it.
class TextInserter {
public:
    static constexpr double pasteDelaySec = 0.03;
    static constexpr double restoreDelaySec = 1.2;
    static constexpr double modifierWaitSec = 0.6;
    static constexpr double modifierPollSec = 0.02;

    // Told once the paste has gone out (true) or was given up because a
    // modifier stayed down (false: the text stays on the clipboard).
    using Sent = std::function<void(bool pasted)>;

    // The queue must outlive every insert's timers; it is the program's main loop.
    TextInserter(MainQueue& queue, std::shared_ptr<Clipboard> clipboard,
                 std::shared_ptr<KeyInjector> keys, std::shared_ptr<SecureInput> secureInput);

    // Whether a paste can be posted to other applications at all.
    bool canAutoPaste() const;

    // A dictation has begun: the clipboard may be read now, so that its
    // paste need not wait for the clipboard's owner.
    void prepare();

    // True: the paste is on its way, and sent will say how it ended; the
    // clipboard is restored after a paste that went out. False: the text has
    // been left on the clipboard for the user to paste, what the clipboard
    // held before is gone, and sent is not called.
    bool insert(std::string_view text, Sent sent = {});

private:
    MainQueue& queue_;
    std::shared_ptr<Clipboard> clipboard_;
    std::shared_ptr<KeyInjector> keys_;
    std::shared_ptr<SecureInput> secureInput_;
};

}  // namespace tevra
