#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "polish/mode.h"
#include "polish/polish_context.h"
#include "polish/replacement.h"
#include "polish/tone_profile.h"

// Everything the language model is told. Pure functions that build each prompt
// afresh, so an edit of the dictionary or a voice counts from the next request.
namespace tevra::PromptBuilder {

struct Language {
    std::string_view code;
    std::string_view name;
};

// The target languages offered for translation, in the order they are shown.
inline constexpr std::array<Language, 10> translateLanguages = {{
    {"en", "English"},
    {"pl", "Polish"},
    {"zh", "Simplified Chinese"},
    {"vi", "Vietnamese"},
    {"es", "Spanish"},
    {"de", "German"},
    {"fr", "French"},
    {"it", "Italian"},
    {"uk", "Ukrainian"},
    {"ru", "Russian"},
}};

// The system prompt of a voice. Only literal replacements are shown to the
// model; pattern rules act in the rule step alone.
std::string system(const Mode& mode, const std::vector<std::string>& dictionary,
                   const std::vector<Replacement>& replacements,
                   const std::vector<Snippet>& snippets, std::string_view persona = "the user");

// The system prompt of plain dictation, the first built-in voice.
std::string system(const std::vector<std::string>& dictionary,
                   const std::vector<Replacement>& replacements,
                   const std::vector<Snippet>& snippets);

// The user message: where the text goes, its tone, what the field already
// holds (its first 1500 characters), and the transcript.
std::string user(std::string_view transcript, const PolishContext& context);

// The system prompt of a free instruction to a polisher.
std::string instructSystem(const std::vector<std::string>& dictionary);

std::string translateSystem(std::string_view code);

// The English name of a translation language, found in any case; an unknown
// code comes back exactly as given.
std::string languageName(std::string_view code);

// The tone of the first profile that matches. Any title profile beats any
// application profile; within each kind the order of the profiles decides.
std::optional<std::string> tone(const std::optional<std::string>& bundleID,
                                const std::optional<std::string>& windowTitle,
                                const std::vector<ToneProfile>& profiles);

// Pairs of application pattern and tone, matched against the application id.
std::optional<std::string> tone(const std::optional<std::string>& bundleID,
                                const std::vector<std::pair<std::string, std::string>>& profiles);

}  // namespace tevra::PromptBuilder
