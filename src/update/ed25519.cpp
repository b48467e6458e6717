#include "update/ed25519.h"

#include <sodium.h>

namespace tevra::Ed25519 {
namespace {

bool sodiumReady() {
    static const bool ready = sodium_init() >= 0;
    return ready;
}

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
    if (!sodiumReady()) {
        return std::nullopt;
    }
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    std::size_t length = 0;
    // No characters to ignore and no end pointer: the whole text must be base64.
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), text.data(),
                          text.size(), nullptr, &length, nullptr,
                          sodium_base64_VARIANT_ORIGINAL) != 0) {
        return std::nullopt;
    }
    bytes.resize(length);
    return bytes;
}

bool verify(std::string_view signature, std::string_view message, std::string_view publicKey) {
    if (!sodiumReady() || signature.size() != crypto_sign_BYTES ||
        publicKey.size() != crypto_sign_PUBLICKEYBYTES) {
        return false;
    }
    return crypto_sign_verify_detached(
               reinterpret_cast<const unsigned char*>(signature.data()),
               reinterpret_cast<const unsigned char*>(message.data()), message.size(),
               reinterpret_cast<const unsigned char*>(publicKey.data())) == 0;
}

}  // namespace tevra::Ed25519
