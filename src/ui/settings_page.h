#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ui/ui_state.h"

// The Settings page: its groups, the choices of its selectors, its notes,
// and when each control takes effect. Most controls only edit the draft,
// which "Save settings" and leaving the page apply; the theme, the chime and
// the notetaker's switch apply at once.
namespace tevra::SettingsPage {

inline constexpr const char* title = "Settings";
inline constexpr const char* subtitle = "Hotkeys, engines and behavior.";
inline constexpr const char* saveLabel = "Save settings";
inline constexpr const char* quitLabel = "Quit Tevra";

struct Option {
    std::string label;
    std::string value;
};

// Profile.
inline constexpr const char* profileGroup = "Profile";
inline constexpr const char* editProfileLabel = "Edit profile";
inline constexpr const char* profileNote =
    "Your name, contact details and sign-off style \u2014 used to sign Email and formal messages "
    "as you.";
inline constexpr const char* signedInAsLabel = "Signed in as";
// The full name, or "not set".
std::string signedInAs(const WeftSettings& settings);
// "Emails sign off with: " and the sign-off's first line, or the note that there is none.
std::string signOffLine(const WeftSettings& settings);

// Appearance.
inline constexpr const char* appearanceGroup = "Appearance";
inline constexpr const char* themeLabel = "Theme";
inline constexpr const char* themeNote =
    "Follow the desktop, or pin Tevra to Light or Dark. The floating pill stays on its dark "
    "glass either way.";
std::vector<Option> themeOptions();

// Hotkeys.
inline constexpr const char* hotkeysGroup = "Hotkeys";
inline constexpr const char* dictateLabel = "Dictate";
inline constexpr const char* talkKeyLabel = "Talk key (an X key name, as xev shows it)";
inline constexpr const char* commandLabel = "Command mode";
inline constexpr const char* commandNote =
    "Command mode executes what you say \u2014 \u201cdraft a formal mail in Polish "
    "saying\u2026\u201d \u2014 and types the result. Esc cancels any recording.";
// The two schemes, named with the settings' talk key.
std::vector<Option> hotkeyOptions(const WeftSettings& settings);
std::string hotkeyNote(const WeftSettings& settings);
std::vector<Option> commandOptions();

// Dictation.
inline constexpr const char* dictationGroup = "Dictation";
inline constexpr const char* polishLabel = "AI clean-up of dictations";
inline constexpr const char* polishNote =
    "Tevra tidies filler and formatting for you. A language hint helps if you switch languages "
    "a lot; otherwise it auto-detects.";
inline constexpr const char* languageHintLabel = "Language hint (empty = auto-detect)";

// Translate.
inline constexpr const char* translateGroup = "Translate";
inline constexpr const char* translateLabel = "Translate into";
inline constexpr const char* translateNote =
    "The language a Translate mode renders your speech into. Dictation itself still "
    "auto-detects what you speak.";
// Code and name, as Translate and the formal voices offer them.
const std::vector<Option>& translateLanguages();

// Notetaker.
inline constexpr const char* notetakerGroup = "Notetaker";
inline constexpr const char* autoDetectLabel = "Auto-detect calls";
inline constexpr const char* autoDetectNote =
    "When a call starts, Tevra records it and turns it into tasks and notes. Recording only "
    "happens with your consent \u2014 Tevra hears the other party through your sound server's "
    "output, with nothing to grant.";

// Feedback.
inline constexpr const char* feedbackGroup = "Feedback";
inline constexpr const char* chimeLabel = "Chime when processing starts and finishes";
inline constexpr const char* crashReportsLabel = "Send anonymous crash reports";
inline constexpr const char* crashReportsNote =
    "Off by default. If on, a crash sends only a stack trace \u2014 never your dictations, "
    "audio, or keys.";

// The controls that apply at once.
void setTheme(UIState& state, const std::string& appearance);
void setSoundCues(UIState& state, bool on);
void setAutoDetect(UIState& state, bool on);

}  // namespace tevra::SettingsPage
