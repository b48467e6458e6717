#include "core/weft_settings_json.h"

#include "base/json_decode.h"

namespace tevra::WeftSettingsJSON {

namespace {

using nlohmann::json;

// The one list of fields and their keys, shared by encoding and decoding so
// that the two cannot drift apart.
template <typename Settings, typename Visit>
void forEachField(Settings& s, Visit&& visit) {
    visit("hotkey", s.hotkey);
    visit("commandHotkey", s.commandHotkey);
    visit("sttProvider", s.sttProvider);
    visit("sttOrder", s.sttOrder);
    visit("polishProvider", s.polishProvider);
    visit("polishEnabled", s.polishEnabled);
    visit("languageHint", s.languageHint);
    visit("keepAudio", s.keepAudio);
    visit("soundCues", s.soundCues);
    visit("appcastURL", s.appcastURL);
    visit("crashReportsEnabled", s.crashReportsEnabled);
    visit("crashReportURL", s.crashReportURL);
    visit("groqSTTModel", s.groqSTTModel);
    visit("groqLLMModel", s.groqLLMModel);
    visit("openaiSTTModel", s.openaiSTTModel);
    visit("openaiLLMModel", s.openaiLLMModel);
    visit("deepinfraSTTModel", s.deepinfraSTTModel);
    visit("fireworksSTTModel", s.fireworksSTTModel);
    visit("proxyBaseURL", s.proxyBaseURL);
    visit("translateTarget", s.translateTarget);
    visit("userFirstName", s.userFirstName);
    visit("userLastName", s.userLastName);
    visit("userEmail", s.userEmail);
    visit("userPhone", s.userPhone);
    visit("userCompany", s.userCompany);
    visit("signatureStyle", s.signatureStyle);
    visit("userSignature", s.userSignature);
    visit("onboarded", s.onboarded);
    visit("appearance", s.appearance);
    visit("notetakerAutoDetect", s.notetakerAutoDetect);
    visit("talkKey", s.talkKey);
}

[[noreturn]] void wrongType(const char* key, const char* expected) {
    throw DecodingError(std::string("settings key \"") + key + "\" is not " + expected);
}

// Strict readers: no number becomes a boolean, no boolean a string.
void read(const char* key, const json& value, std::string& field) {
    if (!value.is_string()) {
        wrongType(key, "a string");
    }
    field = value.get<std::string>();
}

void read(const char* key, const json& value, bool& field) {
    if (!value.is_boolean()) {
        wrongType(key, "a boolean");
    }
    field = value.get<bool>();
}

void read(const char* key, const json& value, std::vector<std::string>& field) {
    if (!value.is_array()) {
        wrongType(key, "an array of strings");
    }
    std::vector<std::string> items;
    for (const json& item : value) {
        if (!item.is_string()) {
            wrongType(key, "an array of strings");
        }
        items.push_back(item.get<std::string>());
    }
    field = std::move(items);
}

}  // namespace

json encode(const WeftSettings& settings) {
    json object = json::object();  // std::map underneath: the keys come out sorted
    forEachField(settings, [&](const char* key, const auto& field) { object[key] = field; });
    return object;
}

WeftSettings decode(const json& object) {
    if (!object.is_object()) {
        throw DecodingError("settings are not a JSON object");
    }
    WeftSettings settings;
    forEachField(settings, [&](const char* key, auto& field) {
        const auto it = object.find(key);
        if (it != object.end() && !it->is_null()) {
            read(key, *it, field);
        }
    });
    return settings;
}

}  // namespace tevra::WeftSettingsJSON
