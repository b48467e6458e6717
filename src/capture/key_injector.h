#pragma once

#include <optional>
#include <vector>

namespace tevra {

// One synthetic key event: a hardware key code going down or up.
struct KeyStroke {
    unsigned keycode = 0;
    bool down = false;

    bool operator==(const KeyStroke&) const = default;
};

using KeySequence = std::vector<KeyStroke>;

// Synthetic keyboard input into whichever application has the focus.
class KeyInjector {
public:
    virtual ~KeyInjector() = default;

    // Whether this program may post input to other applications at all.
    virtual bool isAvailable() = 0;
    // The events of the paste chord for the focused application, or nullopt
    // when they cannot be made.
    virtual std::optional<KeySequence> pasteSequence() = 0;
    // Whether that chord pastes the primary selection rather than the
    // clipboard, as Shift+Insert does in xterm.
    virtual bool pasteReadsPrimary() = 0;
    // Whether the user holds a key that would turn the paste chord into
    // another chord (an Alt still down from Alt+digit makes Ctrl+V
    // Ctrl+Alt+V, which pastes nowhere) or keep it from the application (a
    // hotkey's own key, whose grab takes every key event until it is let go).
    virtual bool modifiersHeld() = 0;
    // The events of the copy chord for the focused application, or nullopt
    // when they cannot be made.
    virtual std::optional<KeySequence> copySequence() = 0;
    // Posts the events in order.
    virtual void post(const KeySequence& events) = 0;
};

}  // namespace tevra
