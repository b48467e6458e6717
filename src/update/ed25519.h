#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Ed25519 signature checks over libsodium.
namespace tevra::Ed25519 {

inline constexpr std::size_t publicKeyBytes = 32;
inline constexpr std::size_t signatureBytes = 64;

// Standard base64 with its padding, strictly: any other character, a missing
// "=" or stray bits in the last character fail.
std::optional<std::string> decodeBase64(std::string_view text);

// Whether signature (64 bytes) is publicKey's (32 bytes) over message. A key
// that is no usable point fails like a wrong signature.
bool verify(std::string_view signature, std::string_view message, std::string_view publicKey);

}  // namespace tevra::Ed25519
