#pragma once

#include <string>
#include <string_view>

namespace tevra::Voice {

// Appended to the prompt of every ghostwritten voice.
extern const std::string_view houseStyle;

// Appended when the output is Polish, or when the context decides the language.
extern const std::string_view polishRegister;

// The signature value written by the built-in voices; any non-empty value
// has the same effect.
extern const std::string_view signOffMarker;

// "zh", "pl" or "en", decided offline from the script, the Polish letters and a
// few common Polish words.
std::string detectLanguage(std::string_view text);

}  // namespace tevra::Voice
