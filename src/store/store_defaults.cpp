#include "store/store_defaults.h"

namespace tevra::StoreDefaults {

std::vector<ToneProfile> toneProfiles() {
    return {
        {"telegram", "casual", "app"}, {"slack", "casual", "app"},   {"whatsapp", "casual", "app"},
        {"mail", "formal", "app"},     {"terminal", "plain", "app"}, {"iterm", "plain", "app"},
        {"gmail", "formal", "title"},
    };
}

std::vector<std::string> dictionaryPhrases() {
    return {"Tevra", "Kestrum", "Groq", "DeepInfra", "Whisper"};
}

}  // namespace tevra::StoreDefaults
