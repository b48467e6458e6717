#include "capture/fn_gesture_machine.h"

namespace tevra {

bool FnGestureMachine::capturing() const {
    // A cleared callback means nobody is capturing, not a crash in the key path.
    return isCapturing && isCapturing();
}

bool FnGestureMachine::heldLongEnough(double at) const {
    return holdThreshold_ <= at - pressAt_;
}

std::vector<FnIntent> FnGestureMachine::consumeAtRelease(double at) {
    resolution_ = Resolution::of(Resolution::Kind::consumed);
    if (capturing() && heldLongEnough(at)) {
        return {FnIntent::finish()};
    }
    return {};
}

std::vector<FnIntent> FnGestureMachine::fnPressed(double at) {
    // A second press without a release (a lost key-up) starts the press over.
    fnDown_ = true;
    fnDownAt_ = at;
    resolution_ = Resolution::of(Resolution::Kind::pending);
    return {};
}

std::vector<FnIntent> FnGestureMachine::digitPressed(const FnAction& action, double at) {
    if (!fnDown_) {
        return {};
    }
    // Any chord key ends a running capture, whatever this press had resolved to.
    if (capturing()) {
        resolution_ = Resolution::of(Resolution::Kind::consumed);
        return {FnIntent::finish()};
    }
    if (resolution_.kind != Resolution::Kind::pending) {
        return {};
    }
    if (action.isMomentary()) {
        resolution_ = Resolution::of(Resolution::Kind::consumed);
        return {*action.momentaryIntent()};
    }
    resolution_ = Resolution::chord(action);
    pressAt_ = at;
    return {*action.startIntent()};
}

std::vector<FnIntent> FnGestureMachine::leaderElapsed(double /*at*/) {
    if (!fnDown_ || resolution_.kind != Resolution::Kind::pending) {
        return {};
    }
    if (capturing()) {
        resolution_ = Resolution::of(Resolution::Kind::consumed);
        return {FnIntent::finish()};
    }
    resolution_ = Resolution::of(Resolution::Kind::dictate);
    // The hold of a plain dictation counts from the key going down, so the leader
    // wait is part of the hold rather than added to it.
    pressAt_ = fnDownAt_;
    return {FnIntent::startSlot(0)};
}

std::vector<FnIntent> FnGestureMachine::fnReleased(double at) {
    if (!fnDown_) {
        return {};
    }
    fnDown_ = false;
    switch (resolution_.kind) {
        case Resolution::Kind::pending:
            // A tap: it starts a dictation on release, and the next tap ends it.
            resolution_ = Resolution::of(Resolution::Kind::consumed);
            if (capturing()) {
                return {FnIntent::finish()};
            }
            return {FnIntent::startSlot(0)};
        case Resolution::Kind::consumed:
            return {};
        case Resolution::Kind::dictate:
        case Resolution::Kind::action:
            return consumeAtRelease(at);
    }
    return {};
}

std::vector<FnIntent> FnGestureMachine::digitReleased(const FnAction& action, double at) {
    // Deliberately ignores fnDown: either key of the chord may be released first,
    // and the first release decides.
    if (resolution_.kind != Resolution::Kind::action || resolution_.action != action) {
        return {};
    }
    return consumeAtRelease(at);
}

std::vector<FnIntent> FnGestureMachine::shortcutStruck(double /*at*/) {
    if (!fnDown_) {
        return {};
    }
    const Resolution::Kind was = resolution_.kind;
    if (was != Resolution::Kind::pending && was != Resolution::Kind::dictate) {
        return {};
    }
    resolution_ = Resolution::of(Resolution::Kind::consumed);
    if (was == Resolution::Kind::dictate && capturing()) {
        return {FnIntent::cancel()};
    }
    return {};
}

void FnGestureMachine::reset() {
    fnDown_ = false;
    resolution_ = Resolution::of(Resolution::Kind::pending);
    fnDownAt_ = 0;
    pressAt_ = 0;
}

}  // namespace tevra
