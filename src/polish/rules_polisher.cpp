#include "polish/rules_polisher.h"

#include "base/text.h"

namespace tevra {

std::string RulesPolisher::apply(std::string_view text,
                                 const std::vector<Replacement>& replacements) {
    std::string result = Replacements::apply(text::trim(text), replacements);
    if (result.empty()) {
        return result;
    }
    result = text::capitalizeFirst(result);
    if (text::countSpaceSeparated(result) >= 4) {
        const auto last = text::lastScalar(result);
        if (last != U'.' && last != U'!' && last != U'?' && last != U'\u2026') {
            result += '.';
        }
    }
    return result;
}

std::string RulesPolisher::polish(const std::string& transcript, const PolishContext& /*context*/,
                                  const std::vector<std::string>& /*dictionary*/,
                                  const std::vector<Replacement>& replacements,
                                  const std::vector<Snippet>& /*snippets*/) const {
    return apply(transcript, replacements);
}

}  // namespace tevra
