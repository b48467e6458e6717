#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "polish/mode.h"

namespace tevra {

// What the gesture machine asks the world to do.
class FnIntent {
public:
    enum class Kind {
        startSlot,
        finish,
        selectTool,
        translateSelection,
        translateClipboard,
        startDictateTranslate,
        clipStack,
        clipPaste,
        clipMode,
        cancel,
    };

    static FnIntent startSlot(int slot) { return FnIntent(Kind::startSlot, slot); }
    static FnIntent finish() { return FnIntent(Kind::finish); }
    static FnIntent selectTool() { return FnIntent(Kind::selectTool); }
    static FnIntent translateSelection() { return FnIntent(Kind::translateSelection); }
    static FnIntent translateClipboard() { return FnIntent(Kind::translateClipboard); }
    static FnIntent startDictateTranslate() { return FnIntent(Kind::startDictateTranslate); }
    static FnIntent clipStack() { return FnIntent(Kind::clipStack); }
    static FnIntent clipPaste() { return FnIntent(Kind::clipPaste); }
    static FnIntent clipMode() { return FnIntent(Kind::clipMode); }
    // Drops the capture under way, as Esc does.
    static FnIntent cancel() { return FnIntent(Kind::cancel); }

    Kind kind() const { return kind_; }
    // The voice slot of startSlot; 0 for every other case.
    int slotNumber() const { return slot_; }

    friend bool operator==(const FnIntent&, const FnIntent&) = default;

private:
    explicit FnIntent(Kind kind, int slot = 0) : kind_(kind), slot_(slot) {}
    Kind kind_;
    int slot_;
};

// What a key means while the talk key is down.
class FnAction {
public:
    enum class Kind {
        slot,
        select,
        translateSelection,
        translateClipboard,
        dictateTranslate,
        clipStack,
        clipPaste,
        clipMode,
    };

    static FnAction slot(int slot) { return FnAction(Kind::slot, slot); }
    static FnAction select() { return FnAction(Kind::select); }
    static FnAction translateSelection() { return FnAction(Kind::translateSelection); }
    static FnAction translateClipboard() { return FnAction(Kind::translateClipboard); }
    static FnAction dictateTranslate() { return FnAction(Kind::dictateTranslate); }
    static FnAction clipStack() { return FnAction(Kind::clipStack); }
    static FnAction clipPaste() { return FnAction(Kind::clipPaste); }
    static FnAction clipMode() { return FnAction(Kind::clipMode); }

    Kind kind() const { return kind_; }
    // The voice slot of slot; 0 for every other case.
    int slotNumber() const { return slot_; }

    // A momentary action fires once at key press and keeps no state; the others
    // start a capture whose end is decided by a later release.
    bool isMomentary() const;
    std::optional<FnIntent> momentaryIntent() const;
    std::optional<FnIntent> startIntent() const;

    friend bool operator==(const FnAction&, const FnAction&) = default;

private:
    explicit FnAction(Kind kind, int slot = 0) : kind_(kind), slot_(slot) {}
    Kind kind_;
    int slot_;
};

// The chord keys. Codes are the virtual key codes of the talk-key monitor; a
// platform monitor translates its own key codes into these before asking.
namespace FnHotkeyMap {

// The keys 1 to 9 and then 0. Not monotonic: 5 is 23, 6 is 22, 9 is 25, 0 is 29.
inline constexpr std::array<uint32_t, 10> digitKeyCodes = {18, 19, 20, 21, 23, 22, 26, 28, 25, 29};

std::optional<FnAction> action(uint32_t keyCode);

// Only slots 1 to 5 have a key; slot 0 is the plain talk-key gesture.
std::optional<uint32_t> keyCode(int slot);

// "Fn" for slot 0, "Fn 3" for slot 3: the key label shown beside a voice.
std::string label(int slot);

}  // namespace FnHotkeyMap

// The talk-key label of a voice's slot: "Fn", "Fn 3".
inline std::string hotkeyLabel(const Mode& mode) {
    return FnHotkeyMap::label(static_cast<int>(mode.slot));
}

}  // namespace tevra
