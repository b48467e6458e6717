#include "capture/linux/x11_focus_probe.h"

#include <utility>

namespace tevra {

X11FocusProbe::X11FocusProbe(std::shared_ptr<X11Connection> x, std::shared_ptr<AtspiFocus> focus)
    : x_(std::move(x)), focus_(std::move(focus)) {}

std::optional<FrontApplication> X11FocusProbe::frontApplication() {
    if (!x_) {
        return std::nullopt;
    }
    const X11Connection::Window window = x_->activeWindow();
    if (window == 0) {
        return std::nullopt;
    }
    FrontApplication app;
    app.window = window;
    app.pid = x_->pid(window);
    if (auto hint = x_->classHint(window); hint && !hint->className.empty()) {
        app.name = hint->className;
        app.id = hint->className;
    }
    return app;
}

bool X11FocusProbe::canReadFocus() {
    return x_ != nullptr;
}

std::optional<std::string> X11FocusProbe::focusedText(const FrontApplication&) {
    if (!focus_) {
        return std::nullopt;
    }
    const auto element = focus_->focused(/*withText=*/true);
    if (!element) {
        return std::nullopt;
    }
    return element->text;
}

std::optional<std::string> X11FocusProbe::windowTitle(const FrontApplication& app) {
    if (!x_ || app.window == 0) {
        return std::nullopt;
    }
    return x_->title(app.window);
}

}  // namespace tevra
