#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "polish/polish_backend.h"

namespace tevra {

// The floor under all polishing: the user's replacements, a capital first
// letter and a closing full stop, with no network and no model.
class RulesPolisher : public PolishBackend {
public:
    std::string name() const override { return "rules"; }

    static std::string apply(std::string_view text, const std::vector<Replacement>& replacements);

    std::string polish(const std::string& transcript, const PolishContext& context,
                       const std::vector<std::string>& dictionary,
                       const std::vector<Replacement>& replacements,
                       const std::vector<Snippet>& snippets) const override;
};

}  // namespace tevra
