#pragma once

#include <nlohmann/json.hpp>

#include "core/weft_settings.h"

// The JSON form of the settings: one flat object, every field under its own name.
namespace tevra::WeftSettingsJSON {

nlohmann::json encode(const WeftSettings& settings);

// An absent or null key takes its default; unknown keys are ignored. Throws
// DecodingError when json is not an object or any known key has the wrong type,
// so that one bad value discards the whole record.
WeftSettings decode(const nlohmann::json& json);

}  // namespace tevra::WeftSettingsJSON
