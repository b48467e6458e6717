#include "ui/onboarding_controllers.h"

namespace tevra {

OnboardingWizardController::OnboardingWizardController(MainQueue& queue, MakeWindow make)
    : queue_(queue), make_(std::move(make)) {}

std::shared_ptr<OnboardingWizardController> OnboardingWizardController::create(MainQueue& queue,
                                                                               MakeWindow make) {
    return std::shared_ptr<OnboardingWizardController>(
        new OnboardingWizardController(queue, std::move(make)));
}

void OnboardingWizardController::show(const std::shared_ptr<UIState>& state) {
    state_ = state;
    if (window_) {
        window_->present();
        return;
    }
    std::weak_ptr<OnboardingWizardController> weak = weak_from_this();
    committed_ = false;
    wizard_ = std::make_unique<OnboardingWizard>(*state, true, [weak] {
        if (auto self = weak.lock()) {
            self->committed_ = true;
            if (self->window_) {
                self->window_->dismiss();
            }
        }
    });
    window_ = make_(*wizard_, [weak] {
        if (auto self = weak.lock()) {
            self->windowWillClose();
        }
    });
    if (window_) {
        window_->present();
    }
}

void OnboardingWizardController::windowWillClose() {
    if (!window_) {
        return;
    }
    if (auto state = state_.lock(); state && !committed_ && !state->settings.onboarded) {
        state->settings.onboarded = true;
        state->saveSettings();
    }
    // The window and the wizard may be in the middle of the call that closed
    // them: they go once it has returned.
    queue_.post([window = std::shared_ptr<OnboardingWindow>(std::move(window_)),
                 wizard = std::shared_ptr<OnboardingWizard>(std::move(wizard_))] {});
}

OnboardingController::OnboardingController(UIState& state, MakeWindow make)
    : state_(state), make_(std::move(make)) {}

std::shared_ptr<OnboardingController> OnboardingController::create(UIState& state,
                                                                   MakeWindow make) {
    return std::shared_ptr<OnboardingController>(new OnboardingController(state, std::move(make)));
}

std::string OnboardingController::heading() const {
    return "Welcome to Tevra, " + state_.tevraFirstName() + ".";
}

void OnboardingController::showIfNeeded() {
    const UIServices& services = state_.services();
    if (watch_ || !services.queue) {
        return;
    }
    std::weak_ptr<OnboardingController> weak = weak_from_this();
    watch_ = MicrophoneWatch::start(*services.queue, services.work, services.microphone,
                                    [weak](const MicrophoneAccess::Check& check) {
                                        if (auto self = weak.lock()) {
                                            self->took(check);
                                        }
                                    });
}

void OnboardingController::refresh() {
    // Asking the sound server blocks: the watch does it off the main thread.
    if (watch_) {
        watch_->checkNow();
    }
}

void OnboardingController::took(const MicrophoneAccess::Check& check) {
    const bool works = check.status == MicrophoneAccess::Status::authorized;
    problem_ = check.problem;
    if (works) {
        watch_->stop();
        if (window_) {
            window_->dismiss();
        }
        return;
    }
    if (!shown_) {
        shown_ = true;
        std::weak_ptr<OnboardingController> weak = weak_from_this();
        window_ = make_(*this, [weak, queue = state_.services().queue] {
            auto self = weak.lock();
            if (self && self->window_) {
                queue->post(
                    [window = std::shared_ptr<OnboardingWindow>(std::move(self->window_))] {});
            }
        });
        if (window_) {
            window_->present();
        }
    }
    if (window_) {
        window_->setMicrophoneWorks(false);
    }
}

}  // namespace tevra
