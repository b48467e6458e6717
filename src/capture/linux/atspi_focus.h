#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tevra {

// The focused element of an application, read over the accessibility bus
// (AT-SPI), where GTK, Qt and the browsers publish their widgets. Each read
// asks the application afresh. Main thread only.
class AtspiFocus {
public:
    struct Element {
        bool isPassword = false;
        // The element's text, nullopt when it has none; with withText, its last
        // tailCodePoints code points at most.
        std::optional<std::string> text;
    };

    // Connects lazily, at the first read.
    AtspiFocus() = default;

    // The focused element in the active window of the application with this
    // process id, or of whichever application has an active window when pid
    // is 0. nullopt when the bus, the application or a focused element is
    // missing.
    std::optional<Element> focused(std::int64_t pid, bool withText);

    static constexpr int tailCodePoints = 6000;

private:
    bool connect();

    bool tried_ = false;
    bool connected_ = false;
};

}  // namespace tevra
