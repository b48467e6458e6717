#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "base/http_client.h"
#include "base/os_version.h"
#include "core/deployment.h"
#include "update/update_decision.h"

// The update check: fetch the signed feed, and judge it. Trust rests on the
// Ed25519 signature over version and URL alone; https and the host check
// stand behind it, so that a tampered or misdirected feed ends in silence.
namespace tevra::UpdateChecker {

// The 32 raw bytes of the Ed25519 key that verifies the feed, standard base64.
// A build sets its own with the CMake cache variable TEVRA_UPDATE_PUBLIC_KEY.
inline constexpr const char* publicKeyBase64 = Deployment::updatePublicKeyBase64;

// A feed longer than this is refused; one of exactly this many bytes passes.
inline constexpr std::size_t maxAppcastBytes = 262144;

// The refusals, in the order evaluate() and check() test for them.
inline constexpr const char* kFeedNotHttps = "appcast URL not https";
inline constexpr const char* kFetchFailed = "could not fetch appcast";
inline constexpr const char* kTooLarge = "appcast too large \u2014 refusing";
inline constexpr const char* kUnparseable = "appcast could not be parsed";
inline constexpr const char* kTampered =
    "appcast signature invalid \u2014 refusing (possible tampering)";
inline constexpr const char* kDownloadNotHttps = "update URL is not https";
inline constexpr const char* kHostMismatch = "download host doesn't match the update feed";
// Followed by the feed's minimum version and ")".
inline constexpr const char* kSystemTooOld = "requires a newer Linux kernel (";

// The decision for the feed's bytes, in this order: decode, key, signature
// length, signature, https download, download host (when one is required),
// minimum system version, then the version comparison. Never throws.
UpdateDecision evaluate(std::string_view appcastJSON, const std::string& currentVersion,
                        const OSVersion& os, const std::optional<std::string>& requireDownloadHost,
                        const std::string& publicKey = publicKeyBase64);

// The client the check fetches with: https only, 10 s, nothing kept.
HttpLimits httpLimits();

// Fetches the feed (https only, status 200 only, at most maxAppcastBytes
// counted while reading) and evaluates it, requiring the download to come from
// the feed's own host. Blocking; every failure is a rejected decision.
UpdateDecision check(const HttpClient& http, const std::string& appcastURL,
                     const std::string& currentVersion, const OSVersion& os = OSVersion::running(),
                     const std::string& publicKey = publicKeyBase64);
// The same with a client of httpLimits().
UpdateDecision check(const std::string& appcastURL, const std::string& currentVersion,
                     const OSVersion& os = OSVersion::running());

// Whether the system is at least the dotted minimum (three components; a
// missing one is 0, further ones are ignored).
bool osMeets(const OSVersion& os, const std::string& minimum);

// -1, 0 or 1 as a is older than, the same as, or newer than b. Components are
// compared as numbers; a missing one is 0, and one that is no whole number
// ("3-beta") counts as 0.
int compareVersions(const std::string& a, const std::string& b);

}  // namespace tevra::UpdateChecker
