#pragma once

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
// whatever the user had copied (an image, a file) comes back. Main thread only.
class TextInserter {
public:
    static constexpr double pasteDelaySec = 0.03;
    static constexpr double restoreDelaySec = 1.2;

    // The queue must outlive every insert's timers; it is the program's main loop.
    TextInserter(MainQueue& queue, std::shared_ptr<Clipboard> clipboard,
                 std::shared_ptr<KeyInjector> keys, std::shared_ptr<SecureInput> secureInput);

    // Whether a paste can be posted to other applications at all.
    bool canAutoPaste() const;

    // True: the paste chord is on its way and the clipboard will be restored.
    // False: the text has been left on the clipboard for the user to paste, and
    // what the clipboard held before is gone.
    bool insert(std::string_view text);

private:
    MainQueue& queue_;
    std::shared_ptr<Clipboard> clipboard_;
    std::shared_ptr<KeyInjector> keys_;
    std::shared_ptr<SecureInput> secureInput_;
};

}  // namespace tevra
