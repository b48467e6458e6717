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
#include "capture/linux/x_synthetic_keys.h"

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
// grab() says so. Keys that Tevra itself sends through XTest (the paste) are
// not the user's and make no event.
//
// All X work runs on the display's own thread; events are posted to the main
// queue in the order the server sent them.
class XKeyboard : public DesktopKeyboard {
public:
    using OwnGrabs = XOwnGrabs;

    // talkKey is an X key symbol name such as "Control_R". An empty
    // displayName means $DISPLAY. ownGrabs and syntheticKeys are shared with
    // the secure-input test and the key injector of the same display.
    XKeyboard(MainQueue& queue, std::string talkKey = "Control_R", LogLine log = {},
              std::string displayName = {}, std::shared_ptr<OwnGrabs> ownGrabs = {},
              std::shared_ptr<XSyntheticKeys> syntheticKeys = {});
    ~XKeyboard() override;

    bool open(EventHandler onEvent) override;
    // An X display with XTest and XInput2 (2.1 or later, for raw events that
    // arrive whoever holds the keyboard).
    bool inputControlAvailable() override;
    TalkKeyWatch watchTalkKey(const std::vector<uint32_t>& chordKeys) override;
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
    void findXTestDevices(Display* display);
    void holdChordKeys(Display* display, bool hold);
    // Grabs code with every lock variant of mask; false (and nothing held)
    // when another client has any of them.
    bool grabAllVariants(Display* display, unsigned code, unsigned mask);
    std::string chordName(uint32_t keysym) const;
    std::vector<unsigned> lockVariants(unsigned mask) const;
    unsigned maskOf(Modifiers modifiers) const;
    void post(const Event& event);
    void grabbedKey(uint8_t keycode, bool down);
    void setGrabbedDown(std::set<uint8_t> keys);

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
    std::vector<KeyCode> heldChords_;        // grabbed while the talk key is down
    std::set<uint32_t> chordsReportedHeld_;  // logged once each
    std::shared_ptr<OwnGrabs> ownGrabs_;
    std::shared_ptr<XSyntheticKeys> syntheticKeys_;
    std::set<int> xtestDevices_;  // where XTest's strokes come from
    // Keys down through one of this keyboard's grabs, and the one whose press
    // made the grab active: its release ends the grab, and with it every
    // other key's claim to come here.
    std::set<uint8_t> grabbedDown_;
    uint8_t grabActivator_ = 0;
};

}  // namespace tevra
