#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tevra {

// The desktop's keyboard as the hotkey monitors see it: key events from
// anywhere on the desktop and exclusive grabs of single keys. The platform
// layer reads the display on a thread of its own and posts every event to the
// main queue, so a monitor sees its events in order on the main thread.
// Keys are named by X key symbols (capture/key_symbols.h).
class DesktopKeyboard {
public:
    enum class Modifiers {
        none,
        alt,
        talkKey,  // whatever modifier the talk key itself sets, if any
    };

    struct Event {
        enum class Kind {
            talkKeyDown,
            talkKeyUp,
            keyDown,  // a key given to Tevra: grabbed, or pressed during a grab
            keyUp,
            // Any other key going down while the talk key is held: seen, not
            // taken; the application gets it as usual.
            otherKeyDown,
        };
        Kind kind = Kind::keyDown;
        uint32_t keysym = 0;
        // A key-down made by the keyboard's auto-repeat while the key stays down.
        bool repeat = false;
        // When the key moved, in seconds on the desktop's own clock (the X
        // server's time), so that a busy main thread cannot turn a hold into
        // a tap. Only differences between events mean anything.
        double time = 0;

        friend bool operator==(const Event&, const Event&) = default;
    };
    using EventHandler = std::function<void(const Event&)>;

    virtual ~DesktopKeyboard() = default;

    // Connects to the desktop; from now until close() events go to onEvent on
    // the main queue. False when there is no desktop to connect to.
    virtual bool open(EventHandler onEvent) = 0;
    // The keyboard can be watched without taking keys from the applications.
    virtual bool inputControlAvailable() = 0;
    struct TalkKeyWatch {
        bool watching = false;
        // Why the talk key cannot be watched, in words for the user; empty
        // when the desktop offers no way to watch keys at all.
        std::string problem;
        // Chord keys another program holds with the talk key, named as the
        // user presses them ("Control_R+3"): they will not reach Tevra.
        std::vector<std::string> heldElsewhere;
    };

    // Reports the talk key's presses and releases without ever taking them
    // from the applications, and while it is down holds chordKeys, so that
    // their presses and releases come here instead; any other key going down
    // meanwhile is reported as otherKeyDown.
    virtual TalkKeyWatch watchTalkKey(const std::vector<uint32_t>& chordKeys) = 0;
    // Takes a key from the applications: its presses and releases come here.
    // False when another program holds it.
    virtual bool grab(uint32_t keysym, Modifiers modifiers) = 0;
    virtual void ungrab(uint32_t keysym, Modifiers modifiers) = 0;
    // Gives every key back and ends the events. Safe to call more than once.
    virtual void close() = 0;
};

}  // namespace tevra
