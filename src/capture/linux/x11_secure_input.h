#pragma once

#include <functional>
#include <memory>

#include "capture/linux/atspi_focus.h"
#include "capture/linux/x11_connection.h"
#include "capture/secure_input.h"

namespace tevra {

// Typed input is kept from other programs when the focused element is a
// password field, or when another client holds the keyboard grab (a pinentry
// or polkit dialog, a locked screen): synthetic keys would go to it.
class X11SecureInput : public SecureInput {
public:
    // ownGrab answers whether this program itself holds the keyboard grab at
    // the moment (a hotkey's passive grab that a key press made active); then
    // no other client can, and the probe must not take that grab over.
    X11SecureInput(
        std::shared_ptr<X11Connection> x, std::shared_ptr<AtspiFocus> focus,
        std::function<bool()> ownGrab = [] { return false; });

    bool isActive() override;

    bool passwordFieldFocused();
    bool keyboardGrabbedElsewhere();

private:
    std::shared_ptr<X11Connection> x_;
    std::shared_ptr<AtspiFocus> focus_;
    std::function<bool()> ownGrab_;
};

}  // namespace tevra
