#pragma once

#include <X11/Xlib.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "capture/desktop_keyboard.h"
#include "capture/hotkey_backend.h"
#include "capture/key_event_decoder.h"
#include "capture/linux/x_display_thread.h"
#include "capture/linux/x_own_grabs.h"

namespace tevra {

// The desktop keyboard of an X11 session. The talk key is watched through
// XInput2 raw events on the root window, which every client may receive and
// none can take, so the talk key always reaches the applications. (While one
// of Tevra's own grabs is active the server sends Tevra every key through the
// grab instead, the talk key included, and no raw events.) Keys are
// taken with passive grabs (XGrabKey) on the root window: the chord keys only
// while the talk key is down, with the talk key's own modifier; the other
// keys with their modifier, each also with CapsLock and NumLock on. A key
// another client already holds is refused by the server (BadAccess), and
// grab() says so.
//
// All X work runs on the display's own thread; events are posted to the main
// queue in the order the server sent them.
class XKeyboard : public DesktopKeyboard {
public:
    using OwnGrabs = XOwnGrabs;

    // talkKey is an X key symbol name such as "Control_R"; an unknown name
    // falls back to Control_R. An empty displayName means $DISPLAY.
    XKeyboard(MainQueue& queue, std::string talkKey = "Control_R", LogLine log = {},
              std::string displayName = {}, std::shared_ptr<OwnGrabs> ownGrabs = {});
    ~XKeyboard() override;

    bool open(EventHandler onEvent) override;
    // An X display with XTest and XInput2 (2.1 or later, for raw events that
    // arrive whoever holds the keyboard).
    bool inputControlAvailable() override;
    bool watchTalkKey(const std::vector<uint32_t>& chordKeys) override;
    bool grab(uint32_t keysym, Modifiers modifiers) override;
    void ungrab(uint32_t keysym, Modifiers modifiers) override;
    void close() override;

private:
    // Everything below runs on the display's thread.
    void onXEvent(Display* display, XEvent& event);
    void onRawKey(Display* display, XGenericEventCookie& cookie);
    void deliver(Display* display, const Event& event);
    bool isRepeatedRelease(Display* display, const XKeyEvent& release);
    void readKeymap(Display* display);
    void holdChordKeys(Display* display, bool hold);
    std::vector<unsigned> lockVariants(unsigned mask) const;
    unsigned maskOf(Modifiers modifiers) const;
    void post(const Event& event);
    void grabbedKey(uint8_t keycode, bool down);

    MainQueue& queue_;
    const std::string talkKeyName_;
    LogLine log_;
    const std::string displayName_;
    std::unique_ptr<XDisplayThread> display_;

    EventHandler onEvent_;
    KeyEventDecoder decoder_;
    int xiOpcode_ = -1;
    bool detectableRepeat_ = false;
    KeySym talkKeysym_ = NoSymbol;
    unsigned talkMask_ = 0;
    unsigned numLockMask_ = 0;
    // Key symbols whose key codes the decoder must know, whatever the layout.
    std::set<uint32_t> known_;
    std::vector<uint32_t> chordKeys_;
    std::vector<KeyCode> heldChords_;  // grabbed while the talk key is down
    std::shared_ptr<OwnGrabs> ownGrabs_;
    std::set<uint8_t> grabbedDown_;  // counted in ownGrabs_
};

}  // namespace tevra
