// settings.json as a hand edit or another program may leave it. A text that is
// JSON decodes to settings or fails with a DecodingError; whatever settings
// come out are saved as a text that reads back as the same settings.
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

#include "base/json_decode.h"
#include "core/weft_settings.h"
#include "core/weft_settings_json.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const nlohmann::json json = nlohmann::json::parse(text, nullptr, false);
    if (!json.is_discarded()) {
        try {
            WeftSettingsJSON::decode(json);
        } catch (const DecodingError&) {
        }
    }
    const WeftSettings settings = WeftSettings::fromJSONText(text);
    const std::string saved = WeftSettingsJSON::encode(settings).dump(2) + "\n";
    FUZZ_CHECK(WeftSettings::fromJSONText(saved) == settings);
    return 0;
}
