#include "core/keychain.h"

#include "base/text.h"

namespace tevra::Keychain {

std::optional<std::string> read(SecretStore& store, std::string_view account) {
    const auto data = store.lookup(account);
    if (!data || !text::isValidUTF8(*data)) {
        return std::nullopt;
    }
    std::string value = text::trim(*data);
    if (value.empty()) {
        return std::nullopt;
    }
    return value;
}

bool write(SecretStore& store, std::string_view account, std::string_view value) {
    const std::string trimmed = text::trim(value);
    if (trimmed.empty()) {
        return store.erase(account);
    }
    return store.store(account, trimmed);
}

bool remove(SecretStore& store, std::string_view account) {
    return store.erase(account);
}

}  // namespace tevra::Keychain
