#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "pill/pill_geometry.h"

namespace tevra {

class PillController;

// A screen as the pills see it.
struct PillScreen {
    uint32_t key = 0;       // PillLayout::screenKey of its name
    PillRect visibleFrame;  // without the desktop's panels and docks, Y down
    friend bool operator==(const PillScreen&, const PillScreen&) = default;
};

// One pill's floating panel: a window above all others that never takes the
// keyboard focus. It draws its controller's state and hands the mouse to it.
class PillPanel {
public:
    virtual ~PillPanel() = default;

    // The window, on the screen, Y down.
    virtual PillRect frame() const = 0;
    virtual void setFrame(const PillRect& frame) = 0;
    // Where the pill's capsule is drawn, on the screen, within the frame;
    // animated: it glides there from where it was drawn.
    virtual void setCapsule(const PillRect& capsule, bool animated) = 0;
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
    // The state or the meter changed.
    virtual void redraw() = 0;
};

// The window system under the pills: its screens, the mouse, and panels.
class PillDesktop {
public:
    virtual ~PillDesktop() = default;

    virtual std::vector<PillScreen> screens() const = 0;
    // The screen that shows captures; none when there is no screen.
    virtual std::optional<uint32_t> mainScreen() const = 0;
    // On the screen, Y down.
    virtual PillPoint mouseLocation() const = 0;
    virtual std::unique_ptr<PillPanel> makePanel(uint32_t screen, PillController& controller) = 0;
    // Called on the main queue whenever a screen comes, goes or changes; one
    // observer at a time, none to stop.
    virtual void setScreensChanged(std::function<void()> observer) = 0;
};

}  // namespace tevra
