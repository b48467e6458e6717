#pragma once

#include <memory>

#include "capture/linux/x11_connection.h"
#include "notetaker/call_signals.h"

namespace tevra {

// The applications of an X11 desktop by their WM_CLASS class, lower-cased:
// the one of _NET_ACTIVE_WINDOW in front, those of _NET_CLIENT_LIST running,
// each once, in the window manager's order. Main thread, like the connection.
class X11RunningApplications : public RunningApplications {
public:
    explicit X11RunningApplications(std::shared_ptr<X11Connection> x);

    std::optional<std::string> frontmost() override;
    std::vector<std::string> running() override;

private:
    std::optional<std::string> classOf(X11Connection::Window window) const;

    std::shared_ptr<X11Connection> x_;
};

}  // namespace tevra
