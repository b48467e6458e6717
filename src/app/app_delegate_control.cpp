// What the orchestrator offers besides the capture itself: its state for
// those who watch it, and the main window.
#include "app/app_delegate.h"
#include "store/history_store.h"

namespace tevra {

AppDelegate::CaptureState AppDelegate::captureState() const {
    if (recording_) {
        return CaptureState::recording;
    }
    return processing_ > 0 ? CaptureState::processing : CaptureState::idle;
}

void AppDelegate::captureStateMayHaveChanged() {
    const CaptureState now = captureState();
    if (now == reportedState_) {
        return;
    }
    reportedState_ = now;
    if (onCaptureStateChanged) {
        onCaptureStateChanged();
    }
}

bool AppDelegate::hasVoice(int slot) const {
    const auto& store = runtime_ ? runtime_->store() : nullptr;
    return store && store->mode(slot).has_value();
}

bool AppDelegate::showSettingsWindow() {
    if (!services_.showMainWindow) {
        log("reopen \u2014 the main window is not available yet");
        return false;
    }
    log("reopen \u2192 main window");
    if (uiState_) {
        uiState_->reload();
    }
    services_.showMainWindow();
    return true;
}

}  // namespace tevra
