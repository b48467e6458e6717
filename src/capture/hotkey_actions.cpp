#include "capture/hotkey_actions.h"

namespace tevra {
namespace {

void call(const std::function<void()>& callback) {
    if (callback) {
        callback();
    }
}

constexpr int kDictateTranslateKey = -1;

int keyOf(const HotkeyAction& action) {
    return action.kind == HotkeyAction::Kind::slot ? action.slot : kDictateTranslateKey;
}

}  // namespace

bool HotkeyPresses::capturing() const {
    return backend_.isCapturing && backend_.isCapturing();
}

void HotkeyPresses::pressed(const HotkeyAction& action, double at) {
    using Kind = HotkeyAction::Kind;
    switch (action.kind) {
        case Kind::slot:
        case Kind::dictateTranslate:
            holdDown(action, at);
            break;
        case Kind::select:
            call(backend_.onSelectTool);
            break;
        case Kind::translateSelection:
            call(backend_.onTranslateSelection);
            break;
        case Kind::translateClipboard:
            call(backend_.onTranslateClipboard);
            break;
        case Kind::clipStack:
            call(backend_.onClipStack);
            break;
        case Kind::clipPaste:
            call(backend_.onClipPaste);
            break;
        case Kind::clipMode:
            call(backend_.onClipMode);
            break;
        case Kind::cancel:
            call(backend_.onCancel);
            break;
    }
}

void HotkeyPresses::released(const HotkeyAction& action, double at) {
    if (action.kind == HotkeyAction::Kind::slot ||
        action.kind == HotkeyAction::Kind::dictateTranslate) {
        holdUp(action, at);
    }
}

void HotkeyPresses::holdDown(const HotkeyAction& action, double at) {
    const bool translating = action.kind == HotkeyAction::Kind::dictateTranslate;
    if (capturing()) {
        // Any such key ends a running capture; the releases of keys pressed
        // before then must not end the next one.
        pressedAt_.clear();
        call(translating ? backend_.onDictateTranslateFinish : backend_.onSlotFinish);
        return;
    }
    pressedAt_[keyOf(action)] = at;
    if (translating) {
        call(backend_.onDictateTranslateStart);
    } else if (backend_.onSlotStart) {
        backend_.onSlotStart(action.slot);
    }
}

void HotkeyPresses::holdUp(const HotkeyAction& action, double at) {
    const auto it = pressedAt_.find(keyOf(action));
    if (it == pressedAt_.end()) {
        return;
    }
    const double pressedAt = it->second;
    pressedAt_.erase(it);
    // A short press leaves the capture latched; the next such key ends it.
    if (capturing() && at - pressedAt >= holdThreshold) {
        call(action.kind == HotkeyAction::Kind::dictateTranslate ? backend_.onDictateTranslateFinish
                                                                 : backend_.onSlotFinish);
    }
}

}  // namespace tevra
