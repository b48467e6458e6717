#include "capture/fn_hotkey_map.h"

namespace tevra {

bool FnAction::isMomentary() const {
    switch (kind_) {
        case Kind::slot:
        case Kind::dictateTranslate:
            return false;
        case Kind::select:
        case Kind::translateSelection:
        case Kind::translateClipboard:
        case Kind::clipStack:
        case Kind::clipPaste:
        case Kind::clipMode:
            return true;
    }
    return false;
}

std::optional<FnIntent> FnAction::momentaryIntent() const {
    switch (kind_) {
        case Kind::select:
            return FnIntent::selectTool();
        case Kind::translateSelection:
            return FnIntent::translateSelection();
        case Kind::translateClipboard:
            return FnIntent::translateClipboard();
        case Kind::clipStack:
            return FnIntent::clipStack();
        case Kind::clipPaste:
            return FnIntent::clipPaste();
        case Kind::clipMode:
            return FnIntent::clipMode();
        case Kind::slot:
        case Kind::dictateTranslate:
            return std::nullopt;
    }
    return std::nullopt;
}

std::optional<FnIntent> FnAction::startIntent() const {
    switch (kind_) {
        case Kind::slot:
            return FnIntent::startSlot(slot_);
        case Kind::dictateTranslate:
            return FnIntent::startDictateTranslate();
        case Kind::select:
        case Kind::translateSelection:
        case Kind::translateClipboard:
        case Kind::clipStack:
        case Kind::clipPaste:
        case Kind::clipMode:
            return std::nullopt;
    }
    return std::nullopt;
}

namespace FnHotkeyMap {

std::optional<FnAction> action(uint32_t keyCode) {
    switch (keyCode) {
        case 18:
            return FnAction::slot(1);
        case 19:
            return FnAction::slot(2);
        case 20:
            return FnAction::slot(3);
        case 21:
            return FnAction::slot(4);
        case 23:
            return FnAction::slot(5);
        case 22:
            return FnAction::select();
        case 26:
            return FnAction::translateSelection();
        case 28:
            return FnAction::translateClipboard();
        case 25:
            return FnAction::dictateTranslate();
        case 29:
            return FnAction::clipStack();
        case 47:
            return FnAction::clipPaste();
        case 43:
            return FnAction::clipMode();
        default:
            return std::nullopt;
    }
}

std::optional<uint32_t> keyCode(int slot) {
    if (slot < 1 || slot > 5) {
        return std::nullopt;
    }
    return digitKeyCodes[static_cast<size_t>(slot - 1)];
}

std::string label(int slot) {
    if (slot == 0) {
        return "Fn";
    }
    return "Fn " + std::to_string(slot);
}

}  // namespace FnHotkeyMap

}  // namespace tevra
