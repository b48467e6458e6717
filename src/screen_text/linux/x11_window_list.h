#pragma once

#include <memory>

#include "capture/linux/x11_connection.h"
#include "screen_text/screen_source.h"

namespace tevra {

// The application windows of an X11 desktop, front to back: the window
// manager's _NET_CLIENT_LIST_STACKING reversed, keeping the ordinary windows
// (no docks, panels, desktops, menus or notifications) that are mapped, not
// minimised and on the current desktop, each with its frame.
class X11WindowList : public WindowList {
public:
    explicit X11WindowList(std::shared_ptr<X11Connection> x);

    std::vector<Rect> windowRects(const ScreenArea& screen) override;

private:
    std::shared_ptr<X11Connection> x_;
};

// The normalised, Y-up rectangle of a window given from the top left in
// desktop pixels; nullopt when it is no more than 3% of the screen's width or
// height.
std::optional<Rect> normalisedWindow(const ScreenArea& screen, double x, double y, double width,
                                     double height);

}  // namespace tevra
