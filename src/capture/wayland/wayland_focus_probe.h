#pragma once

#include <memory>

#include "capture/focus_probe.h"
#include "capture/linux/atspi_focus.h"
#include "capture/wayland/toplevel_tracker.h"

namespace tevra {

// The focused application on Wayland: its app id and title from the
// compositor where it tells them (toplevels may be null), the focused field's
// text from AT-SPI, which works alike on Wayland for GTK, Qt and browsers.
class WaylandFocusProbe : public FocusProbe {
public:
    WaylandFocusProbe(std::shared_ptr<ToplevelTracker> toplevels,
                      std::shared_ptr<AtspiFocus> focus);

    std::optional<FrontApplication> frontApplication() override;
    bool canReadFocus() override { return focus_ != nullptr; }
    std::optional<std::string> focusedText(const FrontApplication& app) override;
    std::optional<std::string> windowTitle(const FrontApplication& app) override;

private:
    std::shared_ptr<ToplevelTracker> toplevels_;
    std::shared_ptr<AtspiFocus> focus_;
};

}  // namespace tevra
