#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tevra {

// One user rule: literal whole-word text, or an ICU pattern with a $1 template.
struct Replacement {
    std::string from;
    std::string to;
    bool isRegex = false;

    bool operator==(const Replacement&) const = default;
};

struct Snippet {
    std::string trigger;
    std::string expansion;

    bool operator==(const Snippet&) const = default;
};

namespace Replacements {

// Applies the rules in order, each on the result of the one before, matching
// case-insensitively. A rule whose pattern does not compile is skipped.
std::string apply(std::string_view text, const std::vector<Replacement>& rules);

}  // namespace Replacements
}  // namespace tevra
