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
    if (!notetaker_.start) {
        return "the notetaker is not available yet";
    }
    return notetaker_.start(app);
}

RemoteControl::Answer RemoteControl::stopNotes() {
    if (!notetaker_.stop) {
        return "the notetaker is not available yet";
    }
    return notetaker_.stop();
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
    return notetaker_.state ? notetaker_.state() : "idle";
}

}  // namespace tevra
