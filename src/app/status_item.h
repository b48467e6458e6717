#pragma once

#include <string>

namespace tevra {

// The always-present control of the running program (the tray icon), as far
// as the orchestrator sees it: a tool tip that names the voices on their keys.
class StatusItem {
public:
    virtual ~StatusItem() = default;
    virtual void setToolTip(const std::string& text) = 0;
};

}  // namespace tevra
