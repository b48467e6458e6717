#pragma once

#include <memory>

namespace tevra {

class X11Connection;

// Whether a compositing manager blends the windows of the display's default
// screen now: the owner of the selection _NET_WM_CM_S<screen>. Asked again at
// each call, since a compositor may come and go.
bool x11CompositorRunning(X11Connection& x);

}  // namespace tevra
