#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tevra {

// A service for which the user supplies a key. The raw value is the name of the
// key's environment variable and of its keyring account.
enum class Provider { groq, openai, deepinfra, fireworks };

using ProviderKeys = std::map<Provider, std::string>;

// Every case of an enumeration, in declaration order: allCases<Provider>().
template <typename Enum>
constexpr auto allCases();

template <>
constexpr auto allCases<Provider>() {
    return std::array{Provider::groq, Provider::openai, Provider::deepinfra, Provider::fireworks};
}

constexpr std::string_view rawValue(Provider provider) {
    switch (provider) {
        case Provider::groq:
            return "GROQ_API_KEY";
        case Provider::openai:
            return "OPENAI_API_KEY";
        case Provider::deepinfra:
            return "DEEPINFRA_API_KEY";
        case Provider::fireworks:
            return "FIREWORKS_API_KEY";
    }
    return {};
}

// The provider whose raw value is exactly `name`.
constexpr std::optional<Provider> providerFromRawValue(std::string_view name) {
    for (Provider provider : allCases<Provider>()) {
        if (rawValue(provider) == name) {
            return provider;
        }
    }
    return std::nullopt;
}

}  // namespace tevra
