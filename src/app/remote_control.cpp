#include "app/remote_control.h"

#include <utility>

namespace tevra {

RemoteControl::RemoteControl(MainQueue& queue, std::shared_ptr<AppDelegate> delegate)
    : queue_(queue), delegate_(std::move(delegate)) {}

RemoteControl::Answer RemoteControl::later(void (AppDelegate::*operation)()) {
    queue_.post([weak = std::weak_ptr<AppDelegate>(delegate_), operation] {
        if (auto self = weak.lock()) {
            ((*self).*operation)();
        }
    });
    return std::nullopt;
}

RemoteControl::Answer RemoteControl::refusedIfNoVoice(int slot) const {
    if (!delegate_->hasVoice(slot)) {
        return "no voice in slot " + std::to_string(slot);
    }
    return std::nullopt;
}

RemoteControl::Answer RemoteControl::showWindow() {
    if (!delegate_->showSettingsWindow()) {
        return "the main window is not available yet";
    }
    return std::nullopt;
}

RemoteControl::Answer RemoteControl::startCapture(int slot) {
    if (delegate_->isCapturing()) {
        return "a capture is already running";
    }
    if (auto refused = refusedIfNoVoice(slot)) {
        return refused;
    }
    queue_.post([weak = std::weak_ptr<AppDelegate>(delegate_), slot] {
        if (auto self = weak.lock()) {
            self->startSlot(slot);
        }
    });
    return std::nullopt;
}

RemoteControl::Answer RemoteControl::finishCapture() {
    if (!delegate_->isCapturing()) {
        return "no capture is running";
    }
    return later(&AppDelegate::finishCapture);
}

RemoteControl::Answer RemoteControl::toggleCapture(int slot) {
    if (delegate_->isCapturing()) {
        return later(&AppDelegate::finishCapture);
    }
    return startCapture(slot);
}

RemoteControl::Answer RemoteControl::cancelCapture() {
    if (!delegate_->isCapturing()) {
        return "no capture is running";
    }
    return later(&AppDelegate::cancelCapture);
}

RemoteControl::Answer RemoteControl::translateSelection() {
    return later(&AppDelegate::translateSelection);
}

RemoteControl::Answer RemoteControl::translateClipboard() {
    return later(&AppDelegate::translateClipboardAction);
}

RemoteControl::Answer RemoteControl::selectText() {
    return later(&AppDelegate::selectTool);
}

RemoteControl::Answer RemoteControl::clipQueueAdd() {
    return later(&AppDelegate::clipStackAdd);
}

RemoteControl::Answer RemoteControl::clipQueuePaste() {
    return later(&AppDelegate::clipPaste);
}

RemoteControl::Answer RemoteControl::clipQueueMode() {
    return later(&AppDelegate::clipMode);
}

RemoteControl::Answer RemoteControl::startNotes(const std::string& app) {
    NotetakerController* notetaker = delegate_->notetaker();
    if (!notetaker) {
        return "the notetaker is not available";
    }
    const NotetakerState& state = notetaker->state();
    if (state.is(NotetakerState::Kind::recording)) {
        return "notes are already being taken";
    }
    if (state.is(NotetakerState::Kind::processing)) {
        return "the last session is still being processed";
    }
    const std::string name = app.empty() ? NotetakerController::defaultManualName : app;
    queue_.post([weak = std::weak_ptr<AppDelegate>(delegate_), name] {
        if (auto self = weak.lock(); self && self->notetaker()) {
            self->notetaker()->startManual(name);
        }
    });
    return std::nullopt;
}

RemoteControl::Answer RemoteControl::stopNotes() {
    NotetakerController* notetaker = delegate_->notetaker();
    if (!notetaker) {
        return "the notetaker is not available";
    }
    const NotetakerState& state = notetaker->state();
    if (!state.is(NotetakerState::Kind::recording) && !state.is(NotetakerState::Kind::detected)) {
        return "no notes are being taken";
    }
    queue_.post([weak = std::weak_ptr<AppDelegate>(delegate_)] {
        if (auto self = weak.lock(); self && self->notetaker()) {
            self->notetaker()->stop();
        }
    });
    return std::nullopt;
}

std::string RemoteControl::state() const {
    switch (delegate_->captureState()) {
        case AppDelegate::CaptureState::idle:
            return "idle";
        case AppDelegate::CaptureState::recording:
            return "recording";
        case AppDelegate::CaptureState::processing:
            return "processing";
    }
    return "idle";
}

std::string RemoteControl::notetakerState() const {
    NotetakerController* notetaker = delegate_->notetaker();
    return notetaker ? notetaker->state().name() : "idle";
}

}  // namespace tevra
