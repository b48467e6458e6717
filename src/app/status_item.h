#pragma once

#include <functional>
#include <string>

namespace tevra {

// The always-present control of the running program (the tray icon), as far
// as the orchestrator sees it: a tool tip that names the voices on their keys.
class StatusItem {
public:
    virtual ~StatusItem() = default;
    virtual void setToolTip(const std::string& text) = 0;
    // Puts the control where the user sees it; it stays from then on.
    virtual void show() {}
    // The notetaker's entry of the menu: its label ("Start notes", "Stop
    // notes"), whether it can be picked now, and what picking it does.
    virtual void setNotesEntry(const std::string& label, bool enabled,
                               std::function<void()> action) {
        (void)label;
        (void)enabled;
        (void)action;
    }
};

}  // namespace tevra
