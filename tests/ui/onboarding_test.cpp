// The first run's wizard and the small microphone window, on virtual time.
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "support/fake_microphone_access.h"
#include "support/temp_dir.h"
#include "ui/onboarding_controllers.h"

namespace tevra {
namespace {

using Status = MicrophoneAccess::Status;

// A window that writes what is done to it into a journal.
class RecordingWindow : public OnboardingWindow {
public:
    RecordingWindow(std::vector<std::string>& journal, std::function<void()> onClose)
        : journal_(journal), onClose_(std::move(onClose)) {}
    void present() override { journal_.push_back("present"); }
    void dismiss() override {
        journal_.push_back("close");
        onClose_();
    }
    void setMicrophoneWorks(bool works) override { journal_.push_back(works ? "✓" : "✗"); }
    // The window's own close button.
    void closeByHand() { onClose_(); }

private:
    std::vector<std::string>& journal_;
    std::function<void()> onClose_;
};

class OnboardingTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    testing::TempDir dir;
    WeftRuntime runtime{dir.path(), false, nullptr};
    std::shared_ptr<testing::FakeMicrophoneAccess> microphone =
        std::make_shared<testing::FakeMicrophoneAccess>();
    std::shared_ptr<UIState> state = std::make_shared<UIState>(runtime, nullptr, services());
    std::vector<std::string> journal;
    RecordingWindow* window = nullptr;

    UIServices services() {
        UIServices made;
        made.queue = &queue;
        made.notifications = &notifications;
        made.microphone = microphone;
        made.fullUserName = [] { return std::string("Ann Smith"); };
        return made;
    }
    std::shared_ptr<OnboardingWizardController> wizardController() {
        return OnboardingWizardController::create(
            queue, [this](OnboardingWizard&, std::function<void()> onClose) {
                auto made = std::make_unique<RecordingWindow>(journal, std::move(onClose));
                window = made.get();
                return made;
            });
    }
};

TEST_F(OnboardingTest, TheWizardWalksItsStepsAndFinishSavesTheDraft) {
    auto controller = wizardController();
    controller->show(state);
    controller->show(state);  // only to the front
    EXPECT_EQ(journal, (std::vector<std::string>{"present", "present"}));
    OnboardingWizard& wizard = *controller->wizard();
    EXPECT_EQ(wizard.headLine(), "Let's set you up");
    struct Expected {
        const char* title;
        std::optional<std::string> left;
        const char* right;
    };
    const Expected steps[] = {{"Welcome to Tevra.", "Skip for now", "Continue"},
                              {"Your details", "Back", "Continue"},
                              {"How you sign off", "Back", "Continue"},
                              {"Microphone", "Back", "Start dictating"}};
    for (int step = 0; step <= OnboardingWizard::lastStep; ++step) {
        EXPECT_EQ(wizard.step, step);
        EXPECT_EQ(wizard.title(), steps[step].title);
        EXPECT_EQ(wizard.leftLabel(), steps[step].left);
        EXPECT_EQ(wizard.rightLabel(), steps[step].right);
        if (step == 1) {
            // The previews follow what is typed; one may read empty until then.
            EXPECT_EQ(wizard.signOff("name_phone"), "");
            wizard.draft.userFirstName = "Ann";
            wizard.draft.userPhone = "+48 600";
            EXPECT_NE(wizard.signOff("name_phone").find("+48 600"), std::string::npos);
            EXPECT_EQ(wizard.signOff("name").find("+48 600"), std::string::npos);
            EXPECT_EQ(wizard.signatureEditorHeading(), std::nullopt);
            wizard.draft.signatureStyle = "custom";
            EXPECT_EQ(wizard.signatureEditorHeading(),
                      "YOUR SIGNATURE, EXACTLY AS IT SHOULD APPEAR");
        }
        if (step < OnboardingWizard::lastStep) {
            wizard.right();
        }
    }
    // The microphone was looked at on opening: it works.
    queue.runPending();
    EXPECT_EQ(wizard.micStatus(), "Microphone enabled");
    wizard.right();
    queue.runPending();
    EXPECT_FALSE(controller->isOpen());
    EXPECT_EQ(journal.back(), "close");
    const WeftSettings saved = WeftSettings::load(dir.path());
    EXPECT_TRUE(saved.onboarded);
    EXPECT_EQ(saved.userFirstName, "Ann");
    EXPECT_EQ(saved.signatureStyle, "custom");
}

TEST_F(OnboardingTest, ClosingTheWizardByItsButtonSavesOnlyOnboarded) {
    microphone->answer = Status::denied;
    auto controller = wizardController();
    controller->show(state);
    OnboardingWizard& wizard = *controller->wizard();
    queue.runPending();
    EXPECT_EQ(wizard.micStatus(), "Microphone not enabled yet");
    EXPECT_NE(wizard.micDetail().find("no input device"), std::string::npos);
    // A grant made elsewhere shows up within a second.
    microphone->answer = Status::authorized;
    queue.advance(1.0);
    EXPECT_TRUE(wizard.micGranted);

    wizard.right();
    wizard.right();
    wizard.draft.userFirstName = "Ann";
    window->closeByHand();
    queue.runPending();
    const WeftSettings saved = WeftSettings::load(dir.path());
    EXPECT_TRUE(saved.onboarded);
    EXPECT_EQ(saved.userFirstName, "");
    EXPECT_FALSE(controller->isOpen());
    // The watch ended with the wizard.
    const int checks = microphone->checks;
    queue.advance(5.0);
    EXPECT_EQ(microphone->checks, checks);

    // As the profile editor: no skip, and its own words.
    OnboardingWizard editor(*state, false, [] {});
    EXPECT_EQ(editor.leftLabel(), std::nullopt);
    EXPECT_EQ(editor.title(), "Your profile");
    editor.step = OnboardingWizard::lastStep;
    EXPECT_EQ(editor.rightLabel(), "Save profile");
}

TEST_F(OnboardingTest, TheSmallWindowAppearsOnlyWithoutAMicrophoneAndNeverComesBack) {
    const auto make = [this](OnboardingController&, std::function<void()> onClose) {
        auto made = std::make_unique<RecordingWindow>(journal, std::move(onClose));
        window = made.get();
        return made;
    };
    auto quiet = OnboardingController::create(*state, make);
    quiet->showIfNeeded();
    queue.runPending();
    EXPECT_TRUE(journal.empty());

    microphone->answer = Status::denied;
    auto controller = OnboardingController::create(*state, make);
    EXPECT_EQ(controller->heading(), "Welcome to Tevra, Ann.");
    controller->showIfNeeded();
    queue.runPending();
    EXPECT_EQ(journal, (std::vector<std::string>{"present", "✗"}));
    window->closeByHand();
    queue.runPending();
    queue.advance(3.0);
    EXPECT_FALSE(controller->isOpen());
    EXPECT_EQ(journal.front(), "present");
    EXPECT_EQ(std::count(journal.begin(), journal.end(), "present"), 1);

    // Open, it goes away by itself once the microphone works.
    journal.clear();
    auto again = OnboardingController::create(*state, make);
    again->showIfNeeded();
    queue.runPending();
    microphone->answer = Status::authorized;
    queue.advance(1.0);
    EXPECT_EQ(journal, (std::vector<std::string>{"present", "✗", "close"}));
    EXPECT_FALSE(again->isOpen());
}

}  // namespace
}  // namespace tevra
