#pragma once

#include <X11/Xlib.h>

#include <mutex>

namespace tevra {

// Catches the X errors of one display while it lives, so that a request the
// server refuses (a key grab another program holds: BadAccess) becomes an
// answer instead of the default handler's exit. The handler is process-wide,
// so one trap is set at a time, and errors of other displays go on to the
// handler that was there before.
class XErrorTrap {
public:
    explicit XErrorTrap(Display* display);
    ~XErrorTrap();

    XErrorTrap(const XErrorTrap&) = delete;
    XErrorTrap& operator=(const XErrorTrap&) = delete;

    // Waits until the server has answered every request sent so far and
    // returns how many of them failed since the trap was set.
    int sync();

private:
    std::unique_lock<std::mutex> lock_;
    Display* display_;
    XErrorHandler previous_;
};

}  // namespace tevra
