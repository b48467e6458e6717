#include "screen_text/linux/x11_window_activator.h"

#include <X11/Xlib.h>

#include "capture/linux/x_error_trap.h"

namespace tevra {

X11WindowActivator::X11WindowActivator(std::shared_ptr<X11Connection> x) : x_(std::move(x)) {}

void X11WindowActivator::activate(const FrontApplication& app) {
    if (!x_ || app.window == 0) {
        return;
    }
    Display* display = x_->display();
    XErrorTrap trap(display);
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = app.window;
    event.xclient.message_type = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2;  // source: a pager, acting for the user
    event.xclient.data.l[1] = CurrentTime;
    XSendEvent(display, x_->root(), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    trap.sync();
}

}  // namespace tevra
