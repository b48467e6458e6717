#include "capture/key_event_decoder.h"

namespace tevra {

std::optional<DesktopKeyboard::Event> KeyEventDecoder::observed(uint8_t keycode, bool press,
                                                                double time) {
    using Kind = DesktopKeyboard::Event::Kind;
    if (!press) {
        // A release that went to another window still ends the key's press, so
        // a lost release cannot make the key's next press look like a repeat.
        down_.reset(keycode);
    }
    if (keycode != talkKey_) {
        if (press && talkKeyDown_ && !chordKeys_.test(keycode)) {
            return DesktopKeyboard::Event{Kind::otherKeyDown, keysyms_[keycode], false, time};
        }
        return std::nullopt;
    }
    const bool repeat = press && talkKeyDown_;
    talkKeyDown_ = press;
    return DesktopKeyboard::Event{press ? Kind::talkKeyDown : Kind::talkKeyUp, keysyms_[keycode],
                                  repeat, time};
}

DesktopKeyboard::Event KeyEventDecoder::taken(uint8_t keycode, bool press, double time) {
    using Kind = DesktopKeyboard::Event::Kind;
    if (keycode == talkKey_) {
        return *observed(keycode, press, time);
    }
    const bool repeat = press && down_.test(keycode);
    down_.set(keycode, press);
    return {press ? Kind::keyDown : Kind::keyUp, keysyms_[keycode], repeat, time};
}

}  // namespace tevra
