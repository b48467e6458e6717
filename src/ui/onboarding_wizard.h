#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/weft_settings.h"
#include "ui/keys_group.h"
#include "ui/microphone_watch.h"
#include "ui/observers.h"
#include "ui/ui_state.h"

namespace tevra {

// The wizard of the first run, and later the profile editor: a welcome, the
// user's details, the sign-off's style, and the microphone (with a speech
// key where none is present yet). Every edit stays in `draft` until
// finish() saves it. The microphone is looked at every second while the
// wizard lives.
class OnboardingWizard {
public:
    static constexpr int lastStep = 3;

    struct Style {
        const char* label;
        const char* value;
    };
    static constexpr Style styles[] = {{"Just my name", "name"},
                                       {"Name and phone", "name_phone"},
                                       {"Full \u2014 name, company, contact", "full"},
                                       {"Full + confidentiality footer", "legal"},
                                       {"Write my own", "custom"}};
    struct Item {
        const char* heading;
        const char* line;
    };
    static constexpr Item welcomeItems[] = {
        {"Your details", "Used only to build your sign-off \u2014 stored on this computer."},
        {"Your sign-off", "Pick a style; Email and formal modes append it automatically."},
        {"Microphone", "The one thing Tevra needs to hear you: an input on your sound server."}};
    static constexpr const char* welcomeText =
        "Hold your talk key, speak, and Tevra types clean text at your cursor. First, a few "
        "details so your emails and formal messages sign off as you \u2014 not as anyone else.";
    static constexpr const char* detailsTitle = "Your details";
    static constexpr const char* detailsText =
        "These build your sign-off. Leave any blank \u2014 nothing here is required.";
    static constexpr const char* detailFields[] = {"First name", "Last name", "Email", "Phone",
                                                   "Company"};
    static constexpr const char* signOffTitle = "How you sign off";
    static constexpr const char* signOffText =
        "Email and formal messages end with this. The preview updates as you choose.";
    static constexpr const char* previewHeading = "PREVIEW";
    static constexpr const char* noPreview =
        "No signature yet \u2014 fill in your details to sign your messages.";
    static constexpr const char* microphoneTitle = "Microphone";
    static constexpr const char* microphoneText =
        "Tevra needs your microphone to hear you. It's the only thing required.";
    static constexpr const char* micEnabled = "Microphone enabled";
    static constexpr const char* micReady = "You're all set.";
    static constexpr const char* micMissing = "Microphone not enabled yet";
    static constexpr const char* allowLabel = "Allow microphone";
    static constexpr const char* typingNote =
        "On X11, Tevra types straight at your cursor with nothing to grant. In a Wayland session "
        "it types into X11 (XWayland) windows; in native Wayland windows the text waits on the "
        "clipboard for you to paste.";
    static constexpr const char* keyHeading = "Speech service key";
    static constexpr const char* keyNote =
        "Tevra turns speech into text with a cloud service. Paste a Groq key (free at "
        "console.groq.com/keys) or an OpenAI key (platform.openai.com/api-keys); it goes into "
        "your desktop's keyring.";
    static constexpr const char* keyServices[] = {"GROQ_API_KEY", "OPENAI_API_KEY"};

    // onFinish runs after finish() has saved.
    OnboardingWizard(UIState& state, bool isFirstRun, std::function<void()> onFinish);
    ~OnboardingWizard();
    OnboardingWizard(const OnboardingWizard&) = delete;
    OnboardingWizard& operator=(const OnboardingWizard&) = delete;

    UIState& state;
    const bool isFirstRun;
    WeftSettings draft;
    int step = 0;
    bool micGranted = false;
    // The input recorded from, or why none can be, from the last look.
    MicrophoneAccess::Check microphone;

    // "Let's set you up" or "Edit your profile".
    std::string headLine() const;
    std::string title() const;
    // The foot's buttons: the left one is absent on step 0 of the profile editor.
    std::optional<std::string> leftLabel() const;
    std::string rightLabel() const;
    void left();
    void right();
    void advance();
    void back();
    // The draft with onboarded set, into the settings, saved; then onFinish.
    void finish();
    // The draft as the style would sign it.
    WeftSettings preview(const std::string& style) const;
    std::string signOff(const std::string& style) const;
    // The editor of the "legal" and "custom" styles: its heading, or none.
    std::optional<std::string> signatureEditorHeading() const;
    std::string previewText() const;
    std::string micStatus() const;
    std::string micDetail() const;
    void requestMicrophone();

    // The last step asks for a speech key when no speech service can be reached.
    bool needsSpeechKey() const;
    // Saves a key for account (one of keyServices) into the keyring; the
    // runtime takes it. done runs on the main queue with whether it was kept.
    void saveSpeechKey(const std::string& account, std::string key,
                       std::function<void(bool)> done = {});

    [[nodiscard]] Observers::Token observe(std::function<void()> observer) {
        return observers_.add(std::move(observer));
    }

private:
    void tookMicrophone(const MicrophoneAccess::Check& check);

    std::function<void()> onFinish_;
    std::shared_ptr<MicrophoneWatch> watch_;
    std::shared_ptr<KeysGroup> keys_;
    Observers observers_;
};

}  // namespace tevra
