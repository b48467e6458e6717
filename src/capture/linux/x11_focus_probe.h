#pragma once

#include <memory>

#include "capture/focus_probe.h"
#include "capture/linux/atspi_focus.h"
#include "capture/linux/x11_connection.h"

namespace tevra {

// The focused application on X11: the active window's WM_CLASS class names it
// (as the application and as its id), _NET_WM_PID ties it to its accessible
// tree, _NET_WM_NAME is its title; the focused field's text comes over AT-SPI.
class X11FocusProbe : public FocusProbe {
public:
    X11FocusProbe(std::shared_ptr<X11Connection> x, std::shared_ptr<AtspiFocus> focus);

    std::optional<FrontApplication> frontApplication() override;
    // Reading other windows needs nothing more than the display.
    bool canReadFocus() override;
    std::optional<std::string> focusedText(const FrontApplication& app) override;
    std::optional<std::string> windowTitle(const FrontApplication& app) override;

private:
    std::shared_ptr<X11Connection> x_;
    std::shared_ptr<AtspiFocus> focus_;
};

}  // namespace tevra
