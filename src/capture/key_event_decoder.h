#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>

#include "capture/desktop_keyboard.h"

namespace tevra {

// Turns the display's key codes (0 to 255) into the keyboard events of the
// hotkey monitors, on the thread that reads the display. Every keystroke on
// the desktop passes through observed(), so it does as little as it can for
// the keys nobody asked about. Times are the desktop's, in seconds.
class KeyEventDecoder {
public:
    // The symbol a key code stands for; key codes left unset stand for 0.
    void setKeysym(uint8_t keycode, uint32_t keysym) { keysyms_[keycode] = keysym; }
    uint32_t keysym(uint8_t keycode) const { return keysyms_[keycode]; }
    void setTalkKey(std::optional<uint8_t> keycode) { talkKey_ = keycode; }
    // A key taken while the talk key is down (a chord key): its presses come
    // through taken(), so seeing them everywhere too is no shortcut.
    void setChordKey(uint8_t keycode, bool isChord) { chordKeys_.set(keycode, isChord); }

    // A press or release seen anywhere on the desktop, whoever receives it.
    // The talk key's make an event, and so does any other key going down
    // while the talk key is down (the user's own shortcut).
    std::optional<DesktopKeyboard::Event> observed(uint8_t keycode, bool press, double time = 0);
    // A press or release the desktop gave to Tevra: a grabbed key, or any key
    // while a grabbed key is down, the talk key included (the desktop then
    // sends it here instead of reporting it everywhere). A press of a key that
    // is already down is the keyboard's auto-repeat.
    DesktopKeyboard::Event taken(uint8_t keycode, bool press, double time = 0);

    bool isTalkKeyDown() const { return talkKeyDown_; }

private:
    std::array<uint32_t, 256> keysyms_{};
    std::optional<uint8_t> talkKey_;
    bool talkKeyDown_ = false;
    std::bitset<256> down_;
    std::bitset<256> chordKeys_;
};

}  // namespace tevra
