#pragma once

#include <memory>

#include "capture/linux/x11_connection.h"
#include "screen_text/window_activator.h"

namespace tevra {

// Asks the window manager to activate a window (_NET_ACTIVE_WINDOW, as a
// pager does on a user's click, so that no focus-stealing rule holds it back).
class X11WindowActivator : public WindowActivator {
public:
    explicit X11WindowActivator(std::shared_ptr<X11Connection> x);

    void activate(const FrontApplication& app) override;

private:
    std::shared_ptr<X11Connection> x_;
};

}  // namespace tevra
