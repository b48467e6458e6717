#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "core/deployment.h"
#include "polish/signature.h"

namespace tevra {

// The name of the notification posted on the main queue after the settings
// were saved and the runtime reloaded.
inline constexpr const char* weftSettingsChanged = "weft.settingsChanged";

// The user's persisted settings: a value that is copied, never shared. Every
// field is stored under its own name in settings.json; a key the file lacks
// takes the default written here.
struct WeftSettings {
    inline static const std::vector<std::string> defaultSTTOrder = {"fireworks", "deepinfra",
                                                                    "groq", "openai"};

    std::string hotkey = "fn";  // exactly "fn": the talk key; anything else: the Alt scheme
    std::string commandHotkey = "option2";
    std::string sttProvider = "auto";  // "auto", empty, or one pinned backend name
    std::vector<std::string> sttOrder = defaultSTTOrder;
    std::string polishProvider = "auto";  // "auto", "groq", "openai" or "rules"
    bool polishEnabled = true;
    std::string languageHint;  // empty: let the service detect the language
    bool keepAudio = false;
    bool soundCues = true;
    std::string appcastURL = Deployment::appcastURL;
    bool crashReportsEnabled = false;
    std::string crashReportURL = Deployment::crashReportURL;
    std::string groqSTTModel = "whisper-large-v3-turbo";   // also the relay's speech model
    std::string groqLLMModel = "llama-3.3-70b-versatile";  // also the relay's language model
    std::string openaiSTTModel = "whisper-1";
    std::string openaiLLMModel = "gpt-4o-mini";
    std::string deepinfraSTTModel = "openai/whisper-large-v3-turbo";
    std::string fireworksSTTModel = "whisper-v3-turbo";  // also picks the Fireworks host
    std::string proxyBaseURL = Deployment::proxyBaseURL;
    std::string translateTarget = "en";
    std::string userFirstName;
    std::string userLastName;
    std::string userEmail;
    std::string userPhone;
    std::string userCompany;
    std::string signatureStyle = Signature::Identity{}.signatureStyle;
    std::string userSignature;  // the custom sign-off, or the footer of "legal"
    bool onboarded = false;
    std::string appearance = "system";
    bool notetakerAutoDetect = true;
    // The X keysym name of the key that plays the Fn role on Linux keyboards.
    std::string talkKey = "Control_R";

    // The fields the sign-off and the ghostwriter's persona are built from.
    Signature::Identity identity() const {
        return {userFirstName, userLastName,   userEmail,    userPhone,
                userCompany,   signatureStyle, userSignature};
    }

    // The data directory: $XDG_DATA_HOME/Tevra, by default ~/.local/share/Tevra.
    static std::filesystem::path defaultDir();
    // Reads settings.json in dir. Never fails: a missing, unreadable or corrupt
    // file, or one wrong type at any key, gives all defaults.
    static WeftSettings load(const std::filesystem::path& dir);
    // The settings in the text of a settings.json, with the same leniency.
    static WeftSettings fromJSONText(std::string_view text);
    // Writes settings.json in dir atomically, owner-only. A failure leaves the
    // old file as it was and is reported nowhere.
    void save(const std::filesystem::path& dir) const;

    bool operator==(const WeftSettings&) const = default;
};

}  // namespace tevra
