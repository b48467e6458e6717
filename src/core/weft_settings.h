#pragma once

#include <string>

namespace tevra {

// The user's persisted settings: a value that is copied, never shared.
struct WeftSettings {
    bool polishEnabled = true;
    std::string languageHint;  // empty: let the service detect the language
};

}  // namespace tevra
