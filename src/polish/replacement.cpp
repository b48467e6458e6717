#include "polish/replacement.h"

#include "base/text.h"

namespace tevra::Replacements {

std::string apply(std::string_view text, const std::vector<Replacement>& rules) {
    std::string result(text);
    for (const auto& rule : rules) {
        std::string pattern;
        std::string replacementTemplate;
        if (rule.isRegex) {
            pattern = rule.from;
            replacementTemplate = rule.to;
        } else {
            pattern = "\\b" + text::Regex::escapePattern(rule.from) + "\\b";
            replacementTemplate = text::Regex::escapeTemplate(rule.to);
        }
        const auto regex = text::Regex::compile(pattern, /*caseInsensitive=*/true);
        if (!regex) {
            continue;
        }
        result = regex->replaceAll(result, replacementTemplate);
    }
    return result;
}

}  // namespace tevra::Replacements
