#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ui/microphone_watch.h"
#include "ui/onboarding_wizard.h"
#include "ui/ui_state.h"

namespace tevra {

// A window of the first run, as the controllers see it; the Qt layer makes them.
class OnboardingWindow {
public:
    virtual ~OnboardingWindow() = default;
    // To the front with the keyboard's focus.
    virtual void present() = 0;
    // Closes it from the program; its onClose runs as for the window's own button.
    virtual void dismiss() = 0;
    // The small window's mark beside "Microphone": ✓ or ✗.
    virtual void setMicrophoneWorks(bool works) { (void)works; }
};

// Shows the wizard on the first run. Closing its window by the window's own
// button ends the first run too: only `onboarded` is saved, the draft is dropped.
class OnboardingWizardController : public std::enable_shared_from_this<OnboardingWizardController> {
public:
    static constexpr const char* windowTitle = "Welcome to Tevra";
    // Builds the wizard's window; onClose runs whenever it closes.
    using MakeWindow = std::function<std::unique_ptr<OnboardingWindow>(
        OnboardingWizard& wizard, std::function<void()> onClose)>;

    static std::shared_ptr<OnboardingWizardController> create(MainQueue& queue, MakeWindow make);
    // A second call while the wizard is open only brings it to the front.
    void show(const std::shared_ptr<UIState>& state);
    void windowWillClose();
    bool isOpen() const { return window_ != nullptr; }
    OnboardingWizard* wizard() const { return wizard_.get(); }

private:
    OnboardingWizardController(MainQueue& queue, MakeWindow make);

    MainQueue& queue_;
    MakeWindow make_;
    std::weak_ptr<UIState> state_;
    std::unique_ptr<OnboardingWizard> wizard_;
    std::unique_ptr<OnboardingWindow> window_;
    bool committed_ = false;
};

// The small window of a later start when no microphone can be recorded: it
// shows what is missing and goes away by itself once the microphone works.
// Closed by hand, it does not come back in this run.
class OnboardingController : public std::enable_shared_from_this<OnboardingController> {
public:
    static constexpr const char* windowTitle = "Tevra";
    static constexpr const char* text =
        "Tevra needs your microphone to hear you \u2014 that is the only thing truly required. "
        "The dictation hotkeys work right away.";
    static constexpr const char* microphoneLabel = "Microphone";
    static constexpr const char* allowLabel = "Allow microphone";
    static constexpr const char* recommendation =
        "On X11, Tevra types straight at your cursor and the talk key works with nothing to "
        "grant. In a Wayland session both reach X11 (XWayland) windows only: elsewhere Tevra "
        "leaves the text on the clipboard and the Alt number keys stand in.";
    using MakeWindow = std::function<std::unique_ptr<OnboardingWindow>(
        OnboardingController& controller, std::function<void()> onClose)>;

    static std::shared_ptr<OnboardingController> create(UIState& state, MakeWindow make);
    // "Welcome to Tevra, Ann."
    std::string heading() const;
    // Looks at the microphone; the window appears only if it cannot record.
    void showIfNeeded();
    // Looks again now (the window's "Allow microphone").
    void refresh();
    bool isOpen() const { return window_ != nullptr; }
    // Why the microphone cannot record, from the last look.
    const std::string& problem() const { return problem_; }

private:
    OnboardingController(UIState& state, MakeWindow make);
    void took(const MicrophoneAccess::Check& check);

    UIState& state_;
    MakeWindow make_;
    std::shared_ptr<MicrophoneWatch> watch_;
    std::unique_ptr<OnboardingWindow> window_;
    bool shown_ = false;  // once closed by hand, never again in this run
    std::string problem_;
};

}  // namespace tevra
