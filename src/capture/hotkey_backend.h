#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tevra {

// One line for the program's log. The composition root points it at the log file.
using LogLine = std::function<void(const std::string&)>;

// A source of global hotkeys: the talk-key monitor or the Alt-digit fallback.
// The orchestrator sets the callbacks, then starts the backend; all callbacks
// run on the main thread. A new backend's callbacks do nothing and its
// isCapturing answers false.
class HotkeyBackend {
public:
    virtual ~HotkeyBackend() = default;

    std::function<void(int slot)> onSlotStart = [](int) {};
    std::function<void()> onSlotFinish = [] {};
    std::function<bool()> isCapturing = [] { return false; };
    std::function<void()> onCancel = [] {};
    std::function<void()> onSelectTool = [] {};
    std::function<void()> onTranslateSelection = [] {};
    std::function<void()> onTranslateClipboard = [] {};
    std::function<void()> onClipStack = [] {};
    std::function<void()> onClipPaste = [] {};
    std::function<void()> onClipMode = [] {};
    std::function<void()> onDictateTranslateStart = [] {};
    std::function<void()> onDictateTranslateFinish = [] {};

    // The backend's name, or none when it cannot run here; the caller falls back.
    virtual std::optional<std::string> start() = 0;
    // Once, before the backend is dropped; a backend is not restarted.
    virtual void stop() = 0;
    // Esc belongs to the other applications except while a capture runs.
    virtual void enableCancelKey() = 0;
    virtual void disableCancelKey() = 0;

    // The keys this backend wanted and another program holds, named as the
    // user presses them ("Alt+2", "Control_R+7"); known after start().
    virtual std::vector<std::string> keysHeldElsewhere() const { return {}; }
    // Why start() gave none, in words for the user, when waiting will not
    // help (a talk key no key of this keyboard gives); empty otherwise.
    virtual std::string unavailableReason() const { return {}; }
};

}  // namespace tevra
