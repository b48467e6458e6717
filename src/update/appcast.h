#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tevra {

// The update feed: one signed JSON object naming the newest release.
struct Appcast {
    std::string version;
    std::string url;
    std::optional<std::string> minimumSystemVersion;
    std::optional<std::string> notes;
    // Standard base64 of the 64-byte Ed25519 signature over signedMessage().
    std::string signature;

    bool operator==(const Appcast&) const = default;

    // The only bytes the signature covers: version, a line feed, url. Notes and
    // the minimum system version are left unsigned.
    std::string signedMessage() const;

    // Strict: one UTF-8 JSON object with the three required keys as strings
    // and the optional ones as strings or null; unknown keys are passed over.
    // Nothing for anything else.
    static std::optional<Appcast> decode(std::string_view json);
};

}  // namespace tevra
