#pragma once

#include <map>
#include <optional>

#include "capture/hotkey_backend.h"

namespace tevra {

// What a hot key does, whichever way it reaches Tevra (an Alt key taken from
// the applications, a shortcut of the desktop).
struct HotkeyAction {
    enum class Kind {
        slot,  // a voice: hold to talk, or tap to start and tap again to end
        select,
        translateSelection,
        translateClipboard,
        dictateTranslate,  // held or tapped like a voice
        clipStack,
        clipPaste,
        clipMode,
        cancel,
    };
    Kind kind = Kind::slot;
    int slot = 0;  // the voice of a slot action

    friend bool operator==(const HotkeyAction&, const HotkeyAction&) = default;
};

// The rules of hot keys that go down and come up: a voice key starts a
// capture on press, and a release at least holdThreshold later ends it,
// while a shorter press leaves it latched until the next voice key; any voice
// key during a capture ends it. The other actions fire on press. Calls the
// backend's callbacks; runs on the main thread.
class HotkeyPresses {
public:
    // A press at least this long is hold-to-talk; a shorter one latches.
    static constexpr double holdThreshold = 0.35;

    explicit HotkeyPresses(HotkeyBackend& backend) : backend_(backend) {}

    void pressed(const HotkeyAction& action, double at);
    void released(const HotkeyAction& action, double at);

private:
    bool capturing() const;
    void holdDown(const HotkeyAction& action, double at);
    void holdUp(const HotkeyAction& action, double at);

    HotkeyBackend& backend_;
    // The hold keys that are down, keyed by slot (-1 for dictate-translate).
    std::map<int, double> pressedAt_;
};

}  // namespace tevra
