#include "core/credentials.h"

#include <cstdlib>

#include "base/text.h"
#include "core/keychain.h"

namespace tevra::Credentials {
namespace {

std::optional<std::string> nonEmpty(const Environment& environment, std::string_view name) {
    auto value = environment(name);
    if (!value || value->empty()) {
        return std::nullopt;
    }
    return value;
}

std::string_view unquoted(std::string_view value) {
    if (value.size() >= 2 && value.front() == value.back() &&
        (value.front() == '"' || value.front() == '\'')) {
        return value.substr(1, value.size() - 2);
    }
    return value;
}

}  // namespace

std::optional<std::string> processEnvironment(std::string_view name) {
    const char* value = std::getenv(std::string(name).c_str());
    if (value == nullptr) {
        return std::nullopt;
    }
    return std::string(value);
}

Keys fetch(SecretStore& store, [[maybe_unused]] double timeout, const Environment& environment) {
    Keys keys;
    for (Provider provider : allCases<Provider>()) {
        if (auto value = nonEmpty(environment, rawValue(provider))) {
            keys[provider] = std::move(*value);
        }
    }
    if (keys.size() == allCases<Provider>().size()) {
        return keys;
    }
    for (Provider provider : allCases<Provider>()) {
        if (keys.contains(provider)) {
            continue;
        }
        if (auto value = Keychain::read(store, rawValue(provider))) {
            keys[provider] = std::move(*value);
        }
    }
    return keys;
}

std::optional<std::string> proxyToken(SecretStore& store, const Environment& environment) {
    if (auto value = nonEmpty(environment, proxyTokenAccount)) {
        return value;
    }
    return Keychain::read(store, proxyTokenAccount);
}

Source source(Provider provider, SecretStore& store, const Environment& environment) {
    if (nonEmpty(environment, rawValue(provider))) {
        return Source::environment;
    }
    if (Keychain::read(store, rawValue(provider))) {
        return Source::keychain;
    }
    return Source::none;
}

bool save(Provider provider, std::string_view key, SecretStore& store) {
    return Keychain::write(store, rawValue(provider), key);
}

Keys parse(std::string_view envLines) {
    Keys keys;
    std::size_t start = 0;
    while (start <= envLines.size()) {
        std::size_t end = envLines.find('\n', start);
        if (end == std::string_view::npos) {
            end = envLines.size();
        }
        const std::string_view line = envLines.substr(start, end - start);
        start = end + 1;

        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        const auto provider = providerFromRawValue(text::trimBlanks(line.substr(0, equals)));
        if (!provider) {
            continue;
        }
        const std::string trimmed = text::trimBlanks(line.substr(equals + 1));
        const std::string_view value = unquoted(trimmed);
        if (!value.empty()) {
            keys[*provider] = std::string(value);
        }
    }
    return keys;
}

}  // namespace tevra::Credentials
