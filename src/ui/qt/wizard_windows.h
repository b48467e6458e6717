#pragma once

#include <QDialog>
#include <QWidget>
#include <functional>

#include "ui/onboarding_controllers.h"
#include "ui/qt/page_kit.h"

namespace tevra {

// The wizard drawn: the head with its progress dots, the step, and the foot's
// two buttons. Rebuilt whenever the wizard changes step.
class WizardView : public QWidget {
public:
    // owned, if given, is the wizard itself, kept as long as the view.
    explicit WizardView(OnboardingWizard& wizard, std::shared_ptr<OnboardingWizard> owned = {});
    OnboardingWizard& wizard() const { return wizard_; }

private:
    void rebuild();
    void refreshMicrophone();
    QWidget* welcome();
    QWidget* details();
    QWidget* signOff();
    QWidget* microphone();

    std::shared_ptr<OnboardingWizard> owned_;
    OnboardingWizard& wizard_;
    Observers::Token token_;
    QVBoxLayout* body_;
    QLabel* dots_;
    QPushButton* left_;
    QPushButton* right_;
    int shownStep_ = -1;
    // The parts of the steps that change in place.
    QLabel* preview_ = nullptr;
    QVBoxLayout* styleRows_ = nullptr;
    QLabel* micStatus_ = nullptr;
    QLabel* micDetail_ = nullptr;
    QPushButton* allow_ = nullptr;
};

// The window of the first run around the wizard.
class WizardWindow : public QWidget, public OnboardingWindow {
public:
    WizardWindow(OnboardingWizard& wizard, std::function<void()> onClose);
    void present() override;
    void dismiss() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    std::function<void()> onClose_;
    bool closed_ = false;
};

// The small window of a later start without a working microphone.
class MicrophoneWindow : public QWidget, public OnboardingWindow {
public:
    MicrophoneWindow(OnboardingController& controller, std::function<void()> onClose);
    void present() override;
    void dismiss() override;
    void setMicrophoneWorks(bool works) override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    OnboardingController& controller_;
    std::function<void()> onClose_;
    QLabel* mark_;
    QLabel* problem_;
    bool closed_ = false;
};

// The profile editor in a dialog over parent: the wizard, not as a first run.
void showProfileEditor(QWidget* parent, UIState& state);

}  // namespace tevra
