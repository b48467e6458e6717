#include "capture/linux/x_error_trap.h"

#include <atomic>

namespace tevra {

namespace {

std::mutex trapMutex;
// Written under trapMutex. The handler may run on any thread that uses Xlib,
// but counts only the errors of the trapped display.
std::atomic<Display*> trappedDisplay = nullptr;
std::atomic<int> trappedErrors = 0;
std::atomic<XErrorHandler> previousHandler = nullptr;

int trapHandler(Display* display, XErrorEvent* error) {
    if (display == trappedDisplay) {
        ++trappedErrors;
        return 0;
    }
    const XErrorHandler previous = previousHandler;
    return previous ? previous(display, error) : 0;
}

}  // namespace

XErrorTrap::XErrorTrap(Display* display) : lock_(trapMutex), display_(display) {
    // Errors of requests sent before the trap belong to whoever sent them.
    XSync(display_, False);
    trappedDisplay = display_;
    trappedErrors = 0;
    previous_ = XSetErrorHandler(trapHandler);
    previousHandler = previous_;
}

XErrorTrap::~XErrorTrap() {
    XSync(display_, False);
    XSetErrorHandler(previous_);
    trappedDisplay = nullptr;
    previousHandler = nullptr;
}

int XErrorTrap::sync() {
    XSync(display_, False);
    return trappedErrors;
}

}  // namespace tevra
