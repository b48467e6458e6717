#include "capture/fn_hotkey_monitor.h"

#include <vector>

#include "capture/key_symbols.h"

namespace tevra {

namespace {

void call(const std::function<void()>& callback) {
    if (callback) {
        callback();
    }
}

}  // namespace

FnHotkeyMonitor::FnHotkeyMonitor(MainQueue& queue, std::unique_ptr<DesktopKeyboard> keyboard,
                                 double holdThreshold, double leaderWindow)
    : queue_(queue), keyboard_(std::move(keyboard)), machine_(holdThreshold, leaderWindow) {}

FnHotkeyMonitor::~FnHotkeyMonitor() {
    cancelLeader();
    keyboard_->close();
}

bool FnHotkeyMonitor::capturing() const {
    return isCapturing && isCapturing();
}

std::optional<std::string> FnHotkeyMonitor::start() {
    std::weak_ptr<FnHotkeyMonitor> weak = weak_from_this();
    machine_.isCapturing = [weak] {
        auto self = weak.lock();
        return self && self->capturing();
    };
    const bool opened = keyboard_->open([weak](const Event& event) {
        if (auto self = weak.lock()) {
            self->handle(event);
        }
    });
    if (!opened) {
        return std::nullopt;
    }
    if (!keyboard_->inputControlAvailable()) {
        keyboard_->close();
        return std::nullopt;
    }
    const std::vector<uint32_t> chordKeys(KeySyms::chordKeys.begin(), KeySyms::chordKeys.end());
    DesktopKeyboard::TalkKeyWatch watch = keyboard_->watchTalkKey(chordKeys);
    if (!watch.watching) {
        unavailableReason_ = std::move(watch.problem);
        keyboard_->close();
        return std::nullopt;
    }
    heldElsewhere_ = std::move(watch.heldElsewhere);
    running_ = true;
    return "fn-tap";
}

void FnHotkeyMonitor::stop() {
    cancelLeader();
    keyboard_->close();
    running_ = false;
    cancelKeyHeld_ = false;
    swallowed_.clear();
    lastFnDown_ = false;
    machine_.reset();
}

void FnHotkeyMonitor::enableCancelKey() {
    if (!running_ || cancelKeyHeld_) {
        return;
    }
    // Both forms, so that Esc also cancels while the talk key is still held.
    // A key some other program holds stays with it; the capture then ends by
    // the talk key alone.
    keyboard_->grab(KeySyms::escape, DesktopKeyboard::Modifiers::none);
    keyboard_->grab(KeySyms::escape, DesktopKeyboard::Modifiers::talkKey);
    cancelKeyHeld_ = true;
}

void FnHotkeyMonitor::disableCancelKey() {
    if (!cancelKeyHeld_) {
        return;
    }
    keyboard_->ungrab(KeySyms::escape, DesktopKeyboard::Modifiers::none);
    keyboard_->ungrab(KeySyms::escape, DesktopKeyboard::Modifiers::talkKey);
    cancelKeyHeld_ = false;
}

void FnHotkeyMonitor::handle(const Event& event) {
    if (!running_) {
        return;
    }
    switch (event.kind) {
        case Event::Kind::talkKeyDown:
            return talkKeyChanged(true, event.time);
        case Event::Kind::talkKeyUp:
            return talkKeyChanged(false, event.time);
        case Event::Kind::keyDown:
            return keyDown(event.keysym, event.time);
        case Event::Kind::keyUp:
            return keyUp(event.keysym, event.time);
        case Event::Kind::otherKeyDown:
            return shortcut(event.time);
    }
}

void FnHotkeyMonitor::talkKeyChanged(bool down, double at) {
    // The talk key is never taken from the applications. A press repeated by
    // the keyboard, or a release already seen, changes nothing.
    if (down == lastFnDown_) {
        return;
    }
    lastFnDown_ = down;
    if (down) {
        fnDownAt_ = at;
        dispatch(machine_.fnPressed(at));
        armLeader();
        return;
    }
    // A main thread that was busy may see the release before its leader timer
    // fired: the desktop's times say whether the window had run out.
    const bool leaderDue = leaderItem_ && at - fnDownAt_ >= machine_.leaderWindow();
    cancelLeader();
    if (leaderDue) {
        dispatch(machine_.leaderElapsed(fnDownAt_ + machine_.leaderWindow()));
    }
    dispatch(machine_.fnReleased(at));
}

void FnHotkeyMonitor::keyDown(uint32_t keysym, double at) {
    if (keysym == KeySyms::escape && capturing()) {
        call(onCancel);
        return;
    }
    if (!machine_.isFnHeld()) {
        return;
    }
    const auto action = KeySyms::chordAction(keysym);
    if (!action) {
        return;
    }
    // A chord has been struck: the plain talk-key gesture must not start now.
    cancelLeader();
    swallowed_.insert(keysym);
    // Auto-repeat is not told from a press: a repeat during a capture ends it.
    dispatch(machine_.digitPressed(*action, at));
}

void FnHotkeyMonitor::keyUp(uint32_t keysym, double at) {
    // Only a chord key whose press the machine heard has a release for it.
    if (swallowed_.erase(keysym) == 0) {
        return;
    }
    if (const auto action = KeySyms::chordAction(keysym)) {
        dispatch(machine_.digitReleased(*action, at));
    }
}

void FnHotkeyMonitor::shortcut(double at) {
    if (!machine_.isFnHeld()) {
        return;
    }
    cancelLeader();
    dispatch(machine_.shortcutStruck(at));
}

void FnHotkeyMonitor::dispatch(const std::vector<FnIntent>& intents) {
    for (const FnIntent& intent : intents) {
        switch (intent.kind()) {
            case FnIntent::Kind::startSlot:
                if (onSlotStart) {
                    onSlotStart(intent.slotNumber());
                }
                break;
            case FnIntent::Kind::finish:
                // A translating capture also ends here: the machine has one finish.
                call(onSlotFinish);
                break;
            case FnIntent::Kind::selectTool:
                call(onSelectTool);
                break;
            case FnIntent::Kind::translateSelection:
                call(onTranslateSelection);
                break;
            case FnIntent::Kind::translateClipboard:
                call(onTranslateClipboard);
                break;
            case FnIntent::Kind::startDictateTranslate:
                call(onDictateTranslateStart);
                break;
            case FnIntent::Kind::clipStack:
                call(onClipStack);
                break;
            case FnIntent::Kind::clipPaste:
                call(onClipPaste);
                break;
            case FnIntent::Kind::clipMode:
                call(onClipMode);
                break;
            case FnIntent::Kind::cancel:
                call(onCancel);
                break;
        }
    }
}

void FnHotkeyMonitor::armLeader() {
    cancelLeader();
    std::weak_ptr<FnHotkeyMonitor> weak = weak_from_this();
    leaderItem_ = queue_.after(machine_.leaderWindow(), [weak] {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        self->leaderItem_.reset();
        self->dispatch(
            self->machine_.leaderElapsed(self->fnDownAt_ + self->machine_.leaderWindow()));
    });
}

void FnHotkeyMonitor::cancelLeader() {
    if (leaderItem_) {
        leaderItem_->cancel();
        leaderItem_.reset();
    }
}

}  // namespace tevra
