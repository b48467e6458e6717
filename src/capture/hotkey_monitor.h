#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "capture/desktop_keyboard.h"
#include "capture/hotkey_actions.h"
#include "capture/hotkey_backend.h"
#include "capture/key_symbols.h"

namespace tevra {

// The fallback hotkey backend, the Alt scheme: Alt+1 to Alt+6 for the voice
// slots, Alt+7 for the select tool, Alt+8, Alt+9 and Alt+0 for translation,
// and Esc while a capture runs. It takes those keys from every application
// and needs nothing else; it has no clipboard queue keys.
//
// Lives in a std::shared_ptr: the keyboard's events hold it weakly. Runs on
// the main thread.
class HotkeyMonitor : public HotkeyBackend, public std::enable_shared_from_this<HotkeyMonitor> {
public:
    // Alt+1 to Alt+6: slot 0 (plain dictation) and voices 1 to 5.
    static constexpr std::array<uint32_t, 6> slotKeyCodes = {
        KeySyms::digit(1), KeySyms::digit(2), KeySyms::digit(3),
        KeySyms::digit(4), KeySyms::digit(5), KeySyms::digit(6),
    };
    // A press at least this long is hold-to-talk; a shorter one latches.
    static constexpr double holdThreshold = HotkeyPresses::holdThreshold;

    struct TranslateBinding {
        const char* label;
        const char* name;
    };
    // For display only.
    static constexpr std::array<TranslateBinding, 3> translateBindings = {{
        {"Fn 7", "Translate selection"},
        {"Fn 8", "Translate clipboard"},
        {"Fn 9", "Dictate → translate"},
    }};

    // slotCount is the number of voices; it is clamped to 1..6 slot keys.
    HotkeyMonitor(MainQueue& queue, std::unique_ptr<DesktopKeyboard> keyboard, int slotCount,
                  LogLine log = {});
    ~HotkeyMonitor() override;

    // "hotkey", or none when not a single slot key could be taken.
    std::optional<std::string> start() override;
    void stop() override;
    void enableCancelKey() override;
    void disableCancelKey() override;

    void handle(const DesktopKeyboard::Event& event);
    std::vector<std::string> keysHeldElsewhere() const override { return heldElsewhere_; }

    int slotCount() const { return slotCount_; }

private:
    // A key this monitor holds, with what it does.
    struct HotKey {
        uint32_t keysym;
        HotkeyAction action;
    };

    bool registerKey(uint32_t keysym, HotkeyAction action);
    std::optional<HotkeyAction> actionOf(uint32_t keysym) const;

    const int slotCount_;
    MainQueue& queue_;
    std::unique_ptr<DesktopKeyboard> keyboard_;
    LogLine log_;
    HotkeyPresses presses_{*this};
    std::vector<HotKey> hotKeyRefs_;  // every registered key but Esc
    std::vector<std::string> heldElsewhere_;
    bool handlerInstalled_ = false;
    bool cancelRef_ = false;  // Esc, held only during a capture
};

}  // namespace tevra
