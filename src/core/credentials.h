#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "core/provider.h"
#include "core/secret_store.h"

// Where the keys for the speech and language services come from: the process
// environment first, the secure store for whatever the environment lacks.
namespace tevra::Credentials {

enum class Source { none, environment, keychain, vps };  // vps is declared, never returned

constexpr std::string_view rawValue(Source source) {
    switch (source) {
        case Source::none:
            return "none";
        case Source::environment:
            return "environment";
        case Source::keychain:
            return "keychain";
        case Source::vps:
            return "vps";
    }
    return {};
}

// The environment variable and store account of the hosted relay's bearer token.
inline constexpr std::string_view proxyTokenAccount = "TEVRA_PROXY_TOKEN";

// Reads one environment variable: nullopt when it is not set.
using Environment = std::function<std::optional<std::string>(std::string_view name)>;

// The real process environment.
std::optional<std::string> processEnvironment(std::string_view name);

using Keys = std::map<Provider, std::string>;

// Every provider's key. Environment values are taken as they stand when set and
// not empty; the store is asked only for the providers the environment lacks, so
// with all four in the environment it is never touched. The time-out is accepted
// for callers and not used.
Keys fetch(SecretStore& store, double timeout = 6.0,
           const Environment& environment = processEnvironment);

// The relay token: the environment variable when set and not empty, else the store.
std::optional<std::string> proxyToken(SecretStore& store,
                                      const Environment& environment = processEnvironment);

// environment, keychain or none, in that order of precedence.
Source source(Provider provider, SecretStore& store,
              const Environment& environment = processEnvironment);

// Writes the key to the store under the provider's account; a blank key removes it.
bool save(Provider provider, std::string_view key, SecretStore& store);

// Keys out of text in the form of an environment file ("NAME=value" lines).
// Only exact provider names count, so comments and "export" lines drop out;
// blanks and tabs around name and value go, and one pair of matching quotes
// around the value. A later line wins unless its value is empty.
Keys parse(std::string_view envLines);

}  // namespace tevra::Credentials
