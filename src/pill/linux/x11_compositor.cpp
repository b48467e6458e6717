#include "pill/linux/x11_compositor.h"

#include <X11/Xlib.h>

#include <string>

#include "capture/linux/x11_connection.h"

namespace tevra {

bool x11CompositorRunning(X11Connection& x) {
    Display* display = x.display();
    const std::string name = "_NET_WM_CM_S" + std::to_string(DefaultScreen(display));
    const Atom selection = XInternAtom(display, name.c_str(), False);
    return XGetSelectionOwner(display, selection) != 0;
}

}  // namespace tevra
