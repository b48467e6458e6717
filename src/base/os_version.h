#pragma once

#include <string>
#include <string_view>

namespace tevra {

// The operating system's version as a triple. On Linux it is the kernel
// release: "6.1.0-18-amd64" is 6.1.0.
struct OSVersion {
    int major = 0;
    int minor = 0;
    int patch = 0;

    bool operator==(const OSVersion&) const = default;
    // "6.1.0"
    std::string dotted() const;

    // The leading numbers of a release text, up to three; a missing one is 0.
    static OSVersion fromRelease(std::string_view release);
    // The running kernel's version (uname), or 0.0.0 when it cannot be read.
    static OSVersion running();
};

}  // namespace tevra
