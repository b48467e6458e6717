#pragma once

#include <optional>
#include <string>

namespace tevra {

// The parts of an absolute URL that trust decisions look at, both lower-cased.
struct URLParts {
    std::string scheme;
    std::string host;
};

// Reads text as an absolute URL of any scheme, as libcurl does; nothing when
// it is no URL or has no scheme. A URL without a host has an empty host.
std::optional<URLParts> parseURL(const std::string& text);

// Whether text is a URL whose scheme is https, in any case.
bool isHttpsURL(const std::string& text);

// Schemes and host names compare without regard to ASCII case.
std::string lowercaseASCII(std::string text);

}  // namespace tevra
