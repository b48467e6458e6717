#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "polish/mode.h"
#include "ui/ui_state.h"

// The Modes page: one card per voice, its switch and its remove control, the
// sign-off editor on one card, the formal voices in other languages, and the
// reset. Every change reloads and tells the program, so the keys follow at once.
namespace tevra::ModesPage {

inline constexpr const char* title = "Modes";
inline constexpr const char* subtitle =
    "One key per voice. Hold to talk and release to send, or tap once to go hands-free and tap "
    "again to finish.";
inline constexpr const char* screenshotBadge = "screenshot";
inline constexpr const char* signatureHeading = "Your sign-off";
inline constexpr const char* signatureNote = "Built from your profile and sign-off style.";
inline constexpr const char* editProfileLabel = "Edit profile";
inline constexpr const char* noSignature =
    "No sign-off yet \u2014 add your details so Tevra signs your emails and formal messages as "
    "you.";
inline constexpr const char* formalHeading = "Add a formal language";
inline constexpr const char* addFormalLabel = "Add on next key";
inline constexpr const char* formalNote =
    "Adds a \u201cFormal message \u2014 <language>\u201d voice on the next number key, using "
    "the same languages as Translate.";
inline constexpr const char* resetLabel = "Reset modes to defaults";

// "On — this key is active" or "Off — this key does nothing".
std::string switchHelp(bool enabled);

// The key that starts the voice, as the settings' scheme presses it: "Right
// Ctrl+2", "Alt+3"; none for a voice beyond the number keys.
std::optional<std::string> keyLabel(const Mode& mode, const WeftSettings& settings);

// Voices the user added; the built-in ones stay.
bool isRemovable(const Mode& mode);

// The card that holds the sign-off editor: among the voices with a
// signature, the first whose name mentions mail, else the lowest slot; none
// when no voice signs.
std::optional<int64_t> signatureHostSlot(const std::vector<Mode>& modes);

void setEnabled(UIState& state, Mode mode, bool enabled);
void remove(UIState& state, int64_t slot);
void addFormalLanguage(UIState& state, const std::string& languageCode);
void resetToDefaults(UIState& state);

}  // namespace tevra::ModesPage
