#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tevra {

// The application that has the focus, as the desktop names it.
struct FrontApplication {
    std::optional<std::string> name;
    std::optional<std::string> id;
    std::int64_t pid = 0;      // 0 when unknown
    std::uint64_t window = 0;  // the platform's handle of its active window
};

// What the desktop tells about the focused application, for the context of a
// dictation. Every read may fail; a failure is nullopt.
class FocusProbe {
public:
    virtual ~FocusProbe() = default;

    virtual std::optional<FrontApplication> frontApplication() = 0;
    // Whether the focused element and the window title may be read at all.
    virtual bool canReadFocus() = 0;
    // The text of the application's focused element, nullopt when the element
    // holds no text (a button, a slider) or is a password field. A long text
    // may come cut to a tail of some thousands of characters.
    virtual std::optional<std::string> focusedText(const FrontApplication& app) = 0;
    virtual std::optional<std::string> windowTitle(const FrontApplication& app) = 0;
};

}  // namespace tevra
