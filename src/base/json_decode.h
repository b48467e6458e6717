#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "base/error.h"

namespace tevra {

// A body that is not the JSON a protocol promises; the text is the decoder's.
class DecodingError : public MessageError {
public:
    using MessageError::MessageError;
};

// Parses a service's reply that must be one JSON object. `what` names the
// reply in the error text, as in "the transcription is not valid JSON: ...".
inline nlohmann::json parseJSONObject(std::string_view body, std::string_view what) {
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(body);
    } catch (const nlohmann::json::exception& e) {
        throw DecodingError(std::string(what) + " is not valid JSON: " + e.what());
    }
    if (!json.is_object()) {
        throw DecodingError(std::string(what) + " is not a JSON object");
    }
    return json;
}

}  // namespace tevra
