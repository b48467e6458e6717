#include "update/appcast.h"

#include <nlohmann/json.hpp>

namespace tevra {
namespace {

using nlohmann::json;

// Throws for a present value that is no string; nothing for an absent or null one.
std::optional<std::string> optionalString(const json& object, const char* key) {
    const auto it = object.find(key);
    if (it == object.end() || it->is_null()) {
        return std::nullopt;
    }
    return it->get<std::string>();
}

}  // namespace

std::string Appcast::signedMessage() const {
    return version + "\n" + url;
}

std::optional<Appcast> Appcast::decode(std::string_view text) {
    try {
        const json object = json::parse(text);
        if (!object.is_object()) {
            return std::nullopt;
        }
        Appcast appcast;
        appcast.version = object.at("version").get<std::string>();
        appcast.url = object.at("url").get<std::string>();
        appcast.signature = object.at("signature").get<std::string>();
        appcast.minimumSystemVersion = optionalString(object, "minimumSystemVersion");
        appcast.notes = optionalString(object, "notes");
        return appcast;
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

}  // namespace tevra
