#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/secret_store.h"

// Text values in the secure store, addressed by account. Values are trimmed of
// white space and line ends on the way in and out, and an empty value is no
// value: reading it gives nothing, writing it deletes the item.
namespace tevra::Keychain {

// nullopt when there is no item, the store cannot be read, or the stored bytes
// are not UTF-8 or are blank.
std::optional<std::string> read(SecretStore& store, std::string_view account);

// Stores the trimmed value; a blank value removes the item instead. True on success.
bool write(SecretStore& store, std::string_view account, std::string_view value);

// True when no item remains for the account.
bool remove(SecretStore& store, std::string_view account);

}  // namespace tevra::Keychain
