#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/wayland/wayland_connection.h"

namespace tevra {

// Which window has the focus, as the compositor tells it through the
// foreign-toplevel protocol (wlroots compositors offer it): its app id and
// title. Wayland gives no other program this, and AT-SPI does not know
// terminals such as foot, whose paste keys depend on it.
class ToplevelTracker {
public:
    struct Toplevel {
        std::string appId;
        std::string title;
    };

    // Null when the compositor does not offer the protocol.
    static std::shared_ptr<ToplevelTracker> create(std::shared_ptr<WaylandConnection> wayland);
    ~ToplevelTracker();

    // The window with the focus, if the compositor has named one.
    std::optional<Toplevel> active() const;

    struct State;  // lives on the connection's thread

private:
    explicit ToplevelTracker(std::shared_ptr<WaylandConnection> wayland);

    std::shared_ptr<WaylandConnection> wayland_;
    std::shared_ptr<State> state_;
};

}  // namespace tevra
