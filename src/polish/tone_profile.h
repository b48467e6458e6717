#pragma once

#include <string>

namespace tevra {

// A tone for the applications or window titles that contain `pattern`.
// `matchKind` "title" matches the window title (in any case); every other
// value matches the application id.
struct ToneProfile {
    std::string pattern;
    std::string tone;
    std::string matchKind = "app";

    bool operator==(const ToneProfile&) const = default;
};

}  // namespace tevra
