#include "capture/linux/x11_secure_input.h"

#include <X11/Xlib.h>

#include <utility>

namespace tevra {

X11SecureInput::X11SecureInput(std::shared_ptr<X11Connection> x, std::shared_ptr<AtspiFocus> focus,
                               std::function<bool()> ownGrab)
    : x_(std::move(x)), focus_(std::move(focus)), ownGrab_(std::move(ownGrab)) {}

bool X11SecureInput::isActive() {
    return passwordFieldFocused() || keyboardGrabbedElsewhere();
}

bool X11SecureInput::passwordFieldFocused() {
    if (!focus_) {
        return false;
    }
    const auto element = focus_->focused(/*withText=*/false);
    return element && element->isPassword;
}

// X11 has no query for the grab: asking for it is the only test. Held for no
// longer than the round trip, and given back at once.
bool X11SecureInput::keyboardGrabbedElsewhere() {
    if (!x_ || ownGrab_()) {
        return false;
    }
    Display* display = x_->display();
    const int status =
        XGrabKeyboard(display, x_->root(), False, GrabModeAsync, GrabModeAsync, CurrentTime);
    if (status == GrabSuccess) {
        XUngrabKeyboard(display, CurrentTime);
        XFlush(display);
        return false;
    }
    return status == AlreadyGrabbed || status == GrabFrozen;
}

}  // namespace tevra
