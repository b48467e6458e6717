#pragma once

#include <optional>
#include <string>

namespace tevra {

// Where the finished text is going, as read from the focused application.
struct PolishContext {
    std::optional<std::string> appName;
    std::optional<std::string> bundleID;
    std::optional<std::string> windowTitle;
    std::optional<std::string> focusedText;
    std::optional<std::string> tone;
};

}  // namespace tevra
