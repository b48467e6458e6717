#include "capture/key_symbols.h"

namespace tevra::KeySyms {

std::optional<uint32_t> chordKeyCode(uint32_t keysym) {
    if (keysym >= digit(0) && keysym <= digit(9)) {
        const uint32_t d = keysym - digit(0);
        // The table runs 1 to 9 and then 0.
        return FnHotkeyMap::digitKeyCodes[d == 0 ? 9 : d - 1];
    }
    if (keysym == period) {
        return 47;
    }
    if (keysym == comma) {
        return 43;
    }
    return std::nullopt;
}

std::optional<FnAction> chordAction(uint32_t keysym) {
    const auto code = chordKeyCode(keysym);
    if (!code) {
        return std::nullopt;
    }
    return FnHotkeyMap::action(*code);
}

}  // namespace tevra::KeySyms
