#pragma once

#include <string>

namespace tevra {

struct WeftSettings;

// What the pill's cards say, in the words of this desktop: the key legend
// names the talk key (or the Alt keys), never a Mac's Fn.
namespace PillTexts {

inline constexpr const char* peekHint = "click for history \u00b7 drag to move";
inline constexpr const char* repasteHint = "Paste this again";

// "Right Ctrl" for "Control_R"; a key without a friendlier name keeps its own.
std::string talkKeyName(const std::string& keysym);
// A label of the legend ("Fn", "Fn 3") as the keys of the settings' scheme
// press it: "Right Ctrl", "Right Ctrl+3"; "Alt+1", "Alt+4".
std::string keyLabel(const std::string& fnLabel, const WeftSettings& settings);
// The history card without a dictation.
std::string emptyHistory(const WeftSettings& settings);
// When a dictation was made: "14:03" today, "3 Jul" before, in local time.
std::string rowTime(double timestamp, double now);

}  // namespace PillTexts
}  // namespace tevra
