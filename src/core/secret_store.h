#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tevra {

// The service under which every Tevra item in the platform's secure store lives.
inline constexpr std::string_view keychainService = "com.kestrum.tevra";

// The platform's secure store, one item per account under one service. It moves
// raw bytes; the rules on values (trimming, empty means delete) are Keychain's.
// Implementations are stateless between calls and safe from any thread. An
// unreachable store behaves as an empty one that refuses writes.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    // The stored bytes of the account's item; nullopt when there is no item or
    // the store cannot be read.
    virtual std::optional<std::string> lookup(std::string_view account) = 0;

    // Updates the data of the account's items in place when any exist, otherwise
    // adds one. True when the store took the data.
    virtual bool store(std::string_view account, std::string_view data) = 0;

    // Deletes the account's items. True when none remains, including when there
    // was none to begin with.
    virtual bool erase(std::string_view account) = 0;
};

// No secure store at all: nothing stored, nothing taken.
class NoSecretStore : public SecretStore {
public:
    std::optional<std::string> lookup(std::string_view) override { return std::nullopt; }
    bool store(std::string_view, std::string_view) override { return false; }
    bool erase(std::string_view) override { return true; }
};

}  // namespace tevra
