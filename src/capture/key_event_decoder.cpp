#include "capture/key_event_decoder.h"

namespace tevra {

std::optional<DesktopKeyboard::Event> KeyEventDecoder::observed(uint8_t keycode, bool press) {
    using Kind = DesktopKeyboard::Event::Kind;
    if (!press) {
        // A release that went to another window still ends the key's press, so
        // a lost release cannot make the key's next press look like a repeat.
        down_.reset(keycode);
    }
    if (keycode != talkKey_) {
        return std::nullopt;
    }
    const bool repeat = press && talkKeyDown_;
    talkKeyDown_ = press;
    return DesktopKeyboard::Event{press ? Kind::talkKeyDown : Kind::talkKeyUp, keysyms_[keycode],
                                  repeat};
}

DesktopKeyboard::Event KeyEventDecoder::taken(uint8_t keycode, bool press) {
    using Kind = DesktopKeyboard::Event::Kind;
    if (keycode == talkKey_) {
        return *observed(keycode, press);
    }
    const bool repeat = press && down_.test(keycode);
    down_.set(keycode, press);
    return {press ? Kind::keyDown : Kind::keyUp, keysyms_[keycode], repeat};
}

}  // namespace tevra
