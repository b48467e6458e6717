#pragma once

#include <sodium.h>

#include <nlohmann/json.hpp>
#include <string>

// A key pair made for one test, and feeds signed with it as the release tool
// signs them: Ed25519 over version, a line feed and url.
namespace tevra::testing {

inline std::string toBase64(const std::string& bytes) {
    std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(),
                      reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                      sodium_base64_VARIANT_ORIGINAL);
    text.pop_back();  // the terminating NUL
    return text;
}

struct FeedKey {
    std::string publicKey = std::string(crypto_sign_PUBLICKEYBYTES, '\0');
    std::string secretKey = std::string(crypto_sign_SECRETKEYBYTES, '\0');

    FeedKey() {
        if (sodium_init() < 0) {
            throw std::runtime_error("libsodium cannot start");
        }
        crypto_sign_keypair(reinterpret_cast<unsigned char*>(publicKey.data()),
                            reinterpret_cast<unsigned char*>(secretKey.data()));
    }

    std::string publicBase64() const { return toBase64(publicKey); }

    std::string signatureBytes(const std::string& message) const {
        std::string signature(crypto_sign_BYTES, '\0');
        crypto_sign_detached(reinterpret_cast<unsigned char*>(signature.data()), nullptr,
                             reinterpret_cast<const unsigned char*>(message.data()), message.size(),
                             reinterpret_cast<const unsigned char*>(secretKey.data()));
        return signature;
    }

    // {"version", "url", "signature"} and whatever extra holds, unsigned.
    nlohmann::json feed(const std::string& version, const std::string& url,
                        nlohmann::json extra = nlohmann::json::object()) const {
        extra["version"] = version;
        extra["url"] = url;
        extra["signature"] = toBase64(signatureBytes(version + "\n" + url));
        return extra;
    }
};

}  // namespace tevra::testing
