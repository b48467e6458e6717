#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tevra {

// What a crash leaves for the next start: versions, a time, a kind and stack
// lines, nothing of the user's dictations, audio or keys.
struct CrashReport {
    std::string appVersion;
    std::string osVersion;            // "6.1.0"
    std::string when;                 // ISO 8601, UTC
    std::string kind;                 // "signal", or "exception:" and the type's name
    std::vector<std::string> frames;  // stack lines, scrubbed of the home directory

    bool operator==(const CrashReport&) const = default;

    // One JSON object: appVersion, osVersion, when, kind, frames.
    std::string toJSON() const;

    // A report made now by this system.
    static CrashReport make(std::string appVersion, std::string kind,
                            std::vector<std::string> frames, const std::filesystem::path& home);

    // Each frame with home, then "/Users/NAME" and "/home/NAME" (NAME being
    // home's last component), replaced by "~".
    static std::vector<std::string> scrub(std::vector<std::string> frames,
                                          const std::filesystem::path& home);
};

}  // namespace tevra
