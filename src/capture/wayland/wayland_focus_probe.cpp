#include "capture/wayland/wayland_focus_probe.h"

#include <utility>

namespace tevra {

WaylandFocusProbe::WaylandFocusProbe(std::shared_ptr<ToplevelTracker> toplevels,
                                     std::shared_ptr<AtspiFocus> focus)
    : toplevels_(std::move(toplevels)), focus_(std::move(focus)) {}

std::optional<FrontApplication> WaylandFocusProbe::frontApplication() {
    const auto active = toplevels_ ? toplevels_->active() : std::nullopt;
    if (!active || active->appId.empty()) {
        return std::nullopt;
    }
    FrontApplication app;
    app.name = active->appId;
    app.id = active->appId;
    return app;
}

std::optional<std::string> WaylandFocusProbe::focusedText(const FrontApplication&) {
    const auto element = focus_ ? focus_->focused(/*withText=*/true) : std::nullopt;
    return element ? element->text : std::nullopt;
}

std::optional<std::string> WaylandFocusProbe::windowTitle(const FrontApplication&) {
    const auto active = toplevels_ ? toplevels_->active() : std::nullopt;
    if (!active || active->title.empty()) {
        return std::nullopt;
    }
    return active->title;
}

}  // namespace tevra
