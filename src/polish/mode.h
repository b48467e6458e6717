#pragma once

#include <cstdint>
#include <string>

namespace tevra {

// One voice on one key. Slot 0 is plain dictation; a non-empty signature
// switches the sign-off on, whatever its value.
struct Mode {
    std::int64_t slot = 0;
    std::string name{};
    std::string instructions{};
    std::string outputLanguage{};  // empty, or a language code
    std::string signature{};
    bool isScreenshot = false;
    bool isCommand = false;
    bool enabled = true;

    // The one-line description shown in the main window.
    std::string summary() const;

    bool operator==(const Mode&) const = default;
};

}  // namespace tevra
