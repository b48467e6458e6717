#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "capture/fn_hotkey_map.h"

namespace tevra {

// Decides what one press of the talk key means: hold-to-talk, tap-to-toggle, or
// the leader of a chord. It owns no timer and reads no clock: the monitor feeds
// it timestamps (seconds, monotonic), arms the leader timer itself and calls
// leaderElapsed when it fires. Every event answers zero or one intent; the list
// lets the caller treat all answers alike.
class FnGestureMachine {
public:
    // Asked at each decision; true while a capture is running.
    std::function<bool()> isCapturing = [] { return false; };

    FnGestureMachine(double holdThreshold, double leaderWindow)
        : holdThreshold_(holdThreshold), leaderWindow_(leaderWindow) {}

    double holdThreshold() const { return holdThreshold_; }
    double leaderWindow() const { return leaderWindow_; }

    std::vector<FnIntent> fnPressed(double at);
    std::vector<FnIntent> fnReleased(double at);
    std::vector<FnIntent> leaderElapsed(double at);
    std::vector<FnIntent> digitPressed(const FnAction& action, double at);
    std::vector<FnIntent> digitReleased(const FnAction& action, double at);
    // A key that is not a chord key went down while the talk key is held: the
    // press is one of the user's own shortcuts (right Ctrl is a modifier people
    // use), so it neither taps, holds nor captures. A dictation this press
    // started when the leader ran out is cancelled.
    std::vector<FnIntent> shortcutStruck(double at);

    void reset();

    bool isFnHeld() const { return fnDown_; }
    bool isChordResolved() const { return resolution_.kind != Resolution::Kind::pending; }

private:
    // What the current press has turned out to be.
    struct Resolution {
        enum class Kind { action, pending, dictate, consumed };
        Kind kind = Kind::pending;
        std::optional<FnAction> action;  // set only for Kind::action

        static Resolution of(Kind kind) { return {kind, std::nullopt}; }
        static Resolution chord(const FnAction& a) { return {Kind::action, a}; }
    };

    bool capturing() const;
    bool heldLongEnough(double at) const;
    // Closes a capture-starting press: finish if it was a hold, nothing if it
    // was short, which leaves the capture latched for the next gesture.
    std::vector<FnIntent> consumeAtRelease(double at);

    const double holdThreshold_;
    const double leaderWindow_;
    bool fnDown_ = false;
    double fnDownAt_ = 0;
    Resolution resolution_;
    double pressAt_ = 0;
};

}  // namespace tevra
