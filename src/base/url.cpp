#include "base/url.h"

#include <curl/curl.h>

#include <memory>

namespace tevra {
namespace {

struct URLDeleter {
    void operator()(CURLU* u) const { curl_url_cleanup(u); }
};

std::optional<std::string> part(CURLU* url, CURLUPart which) {
    char* value = nullptr;
    if (curl_url_get(url, which, &value, 0) != CURLUE_OK || value == nullptr) {
        return std::nullopt;
    }
    std::string text(value);
    curl_free(value);
    return text;
}

}  // namespace

std::optional<URLParts> parseURL(const std::string& text) {
    std::unique_ptr<CURLU, URLDeleter> url(curl_url());
    if (!url || curl_url_set(url.get(), CURLUPART_URL, text.c_str(), CURLU_NON_SUPPORT_SCHEME) !=
                    CURLUE_OK) {
        return std::nullopt;
    }
    const auto scheme = part(url.get(), CURLUPART_SCHEME);
    if (!scheme || scheme->empty()) {
        return std::nullopt;
    }
    return URLParts{lowercaseASCII(*scheme),
                    lowercaseASCII(part(url.get(), CURLUPART_HOST).value_or(""))};
}

std::string lowercaseASCII(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return text;
}

bool isHttpsURL(const std::string& text) {
    const auto parts = parseURL(text);
    return parts && parts->scheme == "https";
}

}  // namespace tevra
