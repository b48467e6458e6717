#include "base/os_version.h"

#include <sys/utsname.h>

namespace tevra {

std::string OSVersion::dotted() const {
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

OSVersion OSVersion::fromRelease(std::string_view release) {
    int parts[3] = {0, 0, 0};
    std::size_t at = 0;
    for (int& part : parts) {
        std::size_t digits = 0;
        long value = 0;
        while (at < release.size() && release[at] >= '0' && release[at] <= '9') {
            // A number too long for an int keeps its first digits.
            if (value < 100000000) {
                value = value * 10 + (release[at] - '0');
            }
            ++at;
            ++digits;
        }
        if (digits == 0) {
            break;
        }
        part = static_cast<int>(value);
        // Only a dot leads to the next number: "6.1.0-18" stops at the dash.
        if (at >= release.size() || release[at] != '.') {
            break;
        }
        ++at;
    }
    return OSVersion{parts[0], parts[1], parts[2]};
}

OSVersion OSVersion::running() {
    utsname names{};
    if (::uname(&names) != 0) {
        return {};
    }
    return fromRelease(names.release);
}

}  // namespace tevra
