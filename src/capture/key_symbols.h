#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "capture/fn_hotkey_map.h"

namespace tevra {

// The X key symbols the hotkey monitors work with. Their values are fixed by
// the X protocol, so the portable monitors name keys by them without including
// X headers; the platform layer turns its key codes into these.
namespace KeySyms {

inline constexpr uint32_t escape = 0xff1b;
inline constexpr uint32_t period = 0x2e;
inline constexpr uint32_t comma = 0x2c;

// The symbol of the digit key d, 0 to 9.
constexpr uint32_t digit(int d) {
    return 0x30 + static_cast<uint32_t>(d);
}

// The twelve chord keys of the talk key: 1 to 9, 0, period, comma.
inline constexpr std::array<uint32_t, 12> chordKeys = {
    digit(1), digit(2), digit(3), digit(4), digit(5), digit(6),
    digit(7), digit(8), digit(9), digit(0), period,   comma,
};

// The key code of the chord key table (FnHotkeyMap) that stands for keysym, or
// none for a key that is not one of the twelve.
std::optional<uint32_t> chordKeyCode(uint32_t keysym);

// What keysym means while the talk key is down: FnHotkeyMap's table, reached
// through the translation above.
std::optional<FnAction> chordAction(uint32_t keysym);

}  // namespace KeySyms

}  // namespace tevra
