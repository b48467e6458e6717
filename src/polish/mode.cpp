#include "polish/mode.h"

#include "base/text.h"
#include "polish/prompt_builder.h"

namespace tevra {

std::string Mode::summary() const {
    if (isScreenshot) {
        return "Reads text from a screen region.";
    }
    if (isCommand) {
        return "Does what you tell it and types the result.";
    }
    if (slot == 0) {
        return "Cleans up your speech into text, verbatim.";
    }
    if (text::lowercase(name).find("email") != std::string::npos) {
        return signature.empty() ? "Formats your speech as an email."
                                 : "Formats your speech as an email, signed with your signature.";
    }
    if (!outputLanguage.empty()) {
        return "Rewrites formally in " + PromptBuilder::languageName(outputLanguage) + ".";
    }
    return "Rewrites formally in the chosen language.";
}

}  // namespace tevra
