#pragma once

#include <string_view>
#include <vector>

#include "polish/mode.h"

namespace tevra::ModeDefaults {

// The instructions of the built-in formal voice, reused for every formal voice
// the user adds in another language.
extern const std::string_view formalInstructions;

// The six voices of a new installation, slots 0 to 5 in order.
std::vector<Mode> seed();

}  // namespace tevra::ModeDefaults
