#include "update/update_checker.h"

#include <charconv>
#include <cstdint>
#include <vector>

#include "base/url.h"
#include "update/ed25519.h"

namespace tevra::UpdateChecker {
namespace {

// A piece that is not wholly a decimal integer (an optional sign first), or
// does not fit, counts as 0.
int64_t componentValue(std::string_view piece) {
    if (piece.size() > 1 && piece.front() == '+' && piece[1] != '-') {
        piece.remove_prefix(1);
    }
    int64_t value = 0;
    const auto [end, error] = std::from_chars(piece.data(), piece.data() + piece.size(), value);
    if (error != std::errc() || end != piece.data() + piece.size()) {
        return 0;
    }
    return value;
}

std::vector<int64_t> components(std::string_view version) {
    std::vector<int64_t> out;
    while (!version.empty()) {
        const std::size_t dot = version.find('.');
        const std::string_view piece = version.substr(0, dot);
        if (!piece.empty()) {
            out.push_back(componentValue(piece));
        }
        if (dot == std::string_view::npos) {
            break;
        }
        version.remove_prefix(dot + 1);
    }
    return out;
}

}  // namespace

int compareVersions(const std::string& a, const std::string& b) {
    const auto left = components(a);
    const auto right = components(b);
    for (std::size_t i = 0; i < std::max(left.size(), right.size()); ++i) {
        const int64_t x = i < left.size() ? left[i] : 0;
        const int64_t y = i < right.size() ? right[i] : 0;
        if (x != y) {
            return x < y ? -1 : 1;
        }
    }
    return 0;
}

bool osMeets(const OSVersion& os, const std::string& minimum) {
    auto wanted = components(minimum);
    wanted.resize(3, 0);
    if (wanted[0] != os.major) {
        return wanted[0] < os.major;
    }
    if (wanted[1] != os.minor) {
        return wanted[1] < os.minor;
    }
    return wanted[2] <= os.patch;
}

UpdateDecision evaluate(std::string_view appcastJSON, const std::string& currentVersion,
                        const OSVersion& os, const std::optional<std::string>& requireDownloadHost,
                        const std::string& publicKey) {
    const auto appcast = Appcast::decode(appcastJSON);
    if (!appcast) {
        return UpdateDecision::rejected(kUnparseable);
    }
    const auto key = Ed25519::decodeBase64(publicKey);
    const auto signature = Ed25519::decodeBase64(appcast->signature);
    if (!key || key->size() != Ed25519::publicKeyBytes || !signature ||
        signature->size() != Ed25519::signatureBytes ||
        !Ed25519::verify(*signature, appcast->signedMessage(), *key)) {
        return UpdateDecision::rejected(kTampered);
    }
    const auto download = parseURL(appcast->url);
    if (!download || download->scheme != "https") {
        return UpdateDecision::rejected(kDownloadNotHttps);
    }
    if (requireDownloadHost && lowercaseASCII(*requireDownloadHost) != download->host) {
        return UpdateDecision::rejected(kHostMismatch);
    }
    if (appcast->minimumSystemVersion && !osMeets(os, *appcast->minimumSystemVersion)) {
        return UpdateDecision::rejected(std::string(kSystemTooOld) +
                                        *appcast->minimumSystemVersion + ")");
    }
    if (compareVersions(appcast->version, currentVersion) == 1) {
        return UpdateDecision::updateAvailable(*appcast);
    }
    return UpdateDecision::upToDate();
}

HttpLimits httpLimits() {
    HttpLimits limits;
    limits.inactivitySec = 10.0;
    limits.totalSec = 10.0;
    limits.httpsOnly = true;
    return limits;
}

UpdateDecision check(const HttpClient& http, const std::string& appcastURL,
                     const std::string& currentVersion, const OSVersion& os,
                     const std::string& publicKey) {
    const auto feed = parseURL(appcastURL);
    if (!feed || feed->scheme != "https") {
        return UpdateDecision::rejected(kFeedNotHttps);
    }
    HttpResponse response;
    try {
        response = http.get(appcastURL, {}, maxAppcastBytes);
    } catch (const HttpBodyTooLarge&) {
        return UpdateDecision::rejected(kTooLarge);
    } catch (const std::exception&) {
        return UpdateDecision::rejected(kFetchFailed);
    }
    if (response.status != 200) {
        return UpdateDecision::rejected(kFetchFailed);
    }
    const std::optional<std::string> host =
        feed->host.empty() ? std::nullopt : std::optional<std::string>(feed->host);
    return evaluate(response.body, currentVersion, os, host, publicKey);
}

UpdateDecision check(const std::string& appcastURL, const std::string& currentVersion,
                     const OSVersion& os) {
    const HttpClient http(httpLimits());
    return check(http, appcastURL, currentVersion, os);
}

}  // namespace tevra::UpdateChecker
