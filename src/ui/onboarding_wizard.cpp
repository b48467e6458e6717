#include "ui/onboarding_wizard.h"

#include "core/weft_runtime.h"
#include "polish/signature.h"

namespace tevra {

OnboardingWizard::OnboardingWizard(UIState& uiState, bool firstRun, std::function<void()> onFinish)
    : state(uiState),
      isFirstRun(firstRun),
      draft(uiState.settings),
      onFinish_(std::move(onFinish)) {
    const UIServices& services = state.services();
    if (services.queue) {
        watch_ = MicrophoneWatch::start(*services.queue, services.work, services.microphone,
                                        [this](const auto& check) { tookMicrophone(check); });
    }
}

OnboardingWizard::~OnboardingWizard() {
    if (watch_) {
        watch_->stop();
    }
}

std::string OnboardingWizard::headLine() const {
    return isFirstRun ? "Let's set you up" : "Edit your profile";
}

std::string OnboardingWizard::title() const {
    switch (step) {
        case 0:
            return isFirstRun ? "Welcome to Tevra." : "Your profile";
        case 1:
            return detailsTitle;
        case 2:
            return signOffTitle;
        default:
            return microphoneTitle;
    }
}

std::optional<std::string> OnboardingWizard::leftLabel() const {
    if (step > 0) {
        return "Back";
    }
    return isFirstRun ? std::optional<std::string>("Skip for now") : std::nullopt;
}

std::string OnboardingWizard::rightLabel() const {
    if (step < lastStep) {
        return "Continue";
    }
    return isFirstRun ? "Start dictating" : "Save profile";
}

void OnboardingWizard::left() {
    if (step > 0) {
        back();
    } else if (isFirstRun) {
        finish();
    }
}

void OnboardingWizard::right() {
    if (step < lastStep) {
        advance();
    } else {
        finish();
    }
}

void OnboardingWizard::advance() {
    step = std::min(step + 1, lastStep);
    observers_.notify();
}

void OnboardingWizard::back() {
    step = std::max(step - 1, 0);
    observers_.notify();
}

void OnboardingWizard::finish() {
    draft.onboarded = true;
    state.settings = draft;
    state.saveSettings();
    if (onFinish_) {
        // It may end this wizard.
        auto onFinish = onFinish_;
        onFinish();
    }
}

WeftSettings OnboardingWizard::preview(const std::string& style) const {
    WeftSettings copy = draft;
    copy.signatureStyle = style;
    return copy;
}

std::string OnboardingWizard::signOff(const std::string& style) const {
    return Signature::build(preview(style).identity());
}

std::optional<std::string> OnboardingWizard::signatureEditorHeading() const {
    if (draft.signatureStyle == "legal") {
        return "CONFIDENTIALITY FOOTER \u2014 LEAVE BLANK FOR THE DEFAULT GDPR / RODO TEXT";
    }
    if (draft.signatureStyle == "custom") {
        return "YOUR SIGNATURE, EXACTLY AS IT SHOULD APPEAR";
    }
    return std::nullopt;
}

std::string OnboardingWizard::previewText() const {
    const std::string built = Signature::build(draft.identity());
    return built.empty() ? noPreview : built;
}

std::string OnboardingWizard::micStatus() const {
    return micGranted ? micEnabled : micMissing;
}

std::string OnboardingWizard::micDetail() const {
    if (micGranted) {
        return microphone.device.empty()
                   ? micReady
                   : std::string(micReady) + " Recording from " + microphone.device + ".";
    }
    const std::string problem = microphone.problem.empty()
                                    ? "Tevra is asking your sound server for an input."
                                    : "Tevra cannot record yet: " + microphone.problem + ".";
    return problem + " Click below to look again once it is fixed.";
}

void OnboardingWizard::requestMicrophone() {
    if (watch_) {
        watch_->checkNow();
    }
}

void OnboardingWizard::tookMicrophone(const MicrophoneAccess::Check& check) {
    microphone = check;
    micGranted = check.status == MicrophoneAccess::Status::authorized;
    observers_.notify();
}

bool OnboardingWizard::needsSpeechKey() const {
    return !state.runtime.hasCloudSTT();
}

void OnboardingWizard::saveSpeechKey(const std::string& account, std::string key,
                                     std::function<void(bool)> done) {
    if (!keys_) {
        keys_ = KeysGroup::create(state);
    }
    keys_->save(account, std::move(key), [this, done = std::move(done)](bool kept) {
        observers_.notify();
        if (done) {
            done(kept);
        }
    });
}

}  // namespace tevra
