#pragma once

#include "capture/focus_probe.h"

namespace tevra {

// Gives the keyboard focus back to an application's window. Main thread only.
class WindowActivator {
public:
    virtual ~WindowActivator() = default;
    virtual void activate(const FrontApplication& app) = 0;
};

}  // namespace tevra
