#include "capture/context_reader.h"

#include <utility>

#include "base/text.h"
#include "polish/prompt_builder.h"

namespace tevra {

ContextReader::ContextReader(std::shared_ptr<FocusProbe> probe) : probe_(std::move(probe)) {}

PolishContext ContextReader::snapshot(const std::vector<ToneProfile>& toneProfiles) const {
    PolishContext context;
    if (std::optional<FrontApplication> front = probe_->frontApplication()) {
        if (probe_->canReadFocus()) {
            std::optional<std::string> value = probe_->focusedText(*front);
            // An empty field is no context: none, not the empty string.
            if (value && !value->empty()) {
                context.focusedText = text::suffixCharacters(*value, focusedTextLimit);
            }
            context.windowTitle = probe_->windowTitle(*front);
        }
        context.appName = front->name;
        context.bundleID = front->id;
    }
    context.tone = PromptBuilder::tone(context.bundleID, context.windowTitle, toneProfiles);
    return context;
}

}  // namespace tevra
