#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "capture/desktop_keyboard.h"
#include "capture/fn_gesture_machine.h"
#include "capture/hotkey_backend.h"

namespace tevra {

// The preferred hotkey backend: watches the talk key anywhere on the desktop
// and feeds the gesture machine, which turns taps, holds and chords (talk key
// plus a digit, period or comma) into the orchestrator's callbacks. The talk
// key itself always reaches the applications; a chord key struck while it is
// down does not, and neither does that key's release.
//
// Lives in a std::shared_ptr: the leader timer and the keyboard's events hold
// it weakly. Runs on the main thread.
class FnHotkeyMonitor : public HotkeyBackend, public std::enable_shared_from_this<FnHotkeyMonitor> {
public:
    enum class Verdict { pass, swallow };
    using Event = DesktopKeyboard::Event;

    FnHotkeyMonitor(MainQueue& queue, std::unique_ptr<DesktopKeyboard> keyboard,
                    double holdThreshold = 0.4, double leaderWindow = 0.25);
    ~FnHotkeyMonitor() override;

    // "fn-tap", or none when the desktop offers no way to watch the talk key.
    std::optional<std::string> start() override;
    void stop() override;
    void enableCancelKey() override;
    void disableCancelKey() override;

    // One key event from the keyboard. The verdict says whether the event
    // belongs to Tevra (swallow) or to the application (pass); the keyboard's
    // grabs are arranged so that exactly the swallowed keys reach Tevra.
    Verdict handle(const Event& event);

    const FnGestureMachine& gestureMachine() const { return machine_; }
    bool isLeaderArmed() const { return leaderItem_.has_value(); }

private:
    Verdict talkKeyChanged(bool down);
    Verdict keyDown(uint32_t keysym);
    Verdict keyUp(uint32_t keysym);
    void dispatch(const std::vector<FnIntent>& intents);
    void armLeader();
    void cancelLeader();
    bool capturing() const;

    MainQueue& queue_;
    std::unique_ptr<DesktopKeyboard> keyboard_;
    FnGestureMachine machine_;
    bool running_ = false;
    std::optional<TimerHandle> leaderItem_;
    // Keys whose key-down was swallowed and whose key-up is still to come.
    std::set<uint32_t> swallowed_;
    bool lastFnDown_ = false;
    bool cancelKeyHeld_ = false;
};

}  // namespace tevra
