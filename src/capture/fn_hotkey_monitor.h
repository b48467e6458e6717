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
// down does not, and neither does that key's release. Any other key struck
// while it is down makes the press one of the user's own shortcuts, which
// Tevra leaves alone. Presses and releases are timed by the desktop's clock.
//
// Lives in a std::shared_ptr: the leader timer and the keyboard's events hold
// it weakly. Runs on the main thread.
class FnHotkeyMonitor : public HotkeyBackend, public std::enable_shared_from_this<FnHotkeyMonitor> {
public:
    using Event = DesktopKeyboard::Event;

    FnHotkeyMonitor(MainQueue& queue, std::unique_ptr<DesktopKeyboard> keyboard,
                    double holdThreshold = 0.4, double leaderWindow = 0.25);
    ~FnHotkeyMonitor() override;

    // "fn-tap", or none when the desktop offers no way to watch the talk key
    // or the talk key is no key of this keyboard.
    std::optional<std::string> start() override;
    void stop() override;
    void enableCancelKey() override;
    void disableCancelKey() override;
    std::vector<std::string> keysHeldElsewhere() const override { return heldElsewhere_; }
    std::string unavailableReason() const override { return unavailableReason_; }

    // One key event from the keyboard. Which keys reach the applications is
    // the keyboard's grabs' affair: they take exactly the chord keys while the
    // talk key is down, and Esc during a capture.
    void handle(const Event& event);

    const FnGestureMachine& gestureMachine() const { return machine_; }
    bool isLeaderArmed() const { return leaderItem_.has_value(); }

private:
    void talkKeyChanged(bool down, double at);
    void keyDown(uint32_t keysym, double at);
    void keyUp(uint32_t keysym, double at);
    void shortcut(double at);
    void dispatch(const std::vector<FnIntent>& intents);
    void armLeader();
    void cancelLeader();
    bool capturing() const;

    MainQueue& queue_;
    std::unique_ptr<DesktopKeyboard> keyboard_;
    FnGestureMachine machine_;
    bool running_ = false;
    std::optional<TimerHandle> leaderItem_;
    // Chord keys whose press went to the machine and whose release is to come.
    std::set<uint32_t> swallowed_;
    bool lastFnDown_ = false;
    double fnDownAt_ = 0;  // the desktop's time of the talk key's press
    std::vector<std::string> heldElsewhere_;
    std::string unavailableReason_;
    bool cancelKeyHeld_ = false;
};

}  // namespace tevra
