#include "screen_text/linux/x11_window_list.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <algorithm>
#include <array>

#include "capture/linux/x_error_trap.h"

namespace tevra {
namespace {

// Window types that are no application's window of their own.
constexpr std::array<const char*, 9> kSkippedTypes = {
    "_NET_WM_WINDOW_TYPE_DESKTOP",    "_NET_WM_WINDOW_TYPE_DOCK",
    "_NET_WM_WINDOW_TYPE_TOOLBAR",    "_NET_WM_WINDOW_TYPE_MENU",
    "_NET_WM_WINDOW_TYPE_SPLASH",     "_NET_WM_WINDOW_TYPE_NOTIFICATION",
    "_NET_WM_WINDOW_TYPE_TOOLTIP",    "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU",
    "_NET_WM_WINDOW_TYPE_POPUP_MENU",
};

constexpr unsigned long kAllDesktops = 0xffffffff;

bool holdsAtom(const std::vector<unsigned long>& atoms, Display* display, const char* name) {
    const Atom atom = XInternAtom(display, name, True);
    return atom != None && std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

}  // namespace

std::optional<Rect> normalisedWindow(const ScreenArea& screen, double x, double y, double width,
                                     double height) {
    if (screen.width <= 0 || screen.height <= 0 || width <= 0.03 * screen.width ||
        height <= 0.03 * screen.height) {
        return std::nullopt;
    }
    const double h = height / screen.height;
    return Rect{(x - screen.x) / screen.width, 1.0 - (y - screen.y) / screen.height - h,
                width / screen.width, h};
}

X11WindowList::X11WindowList(std::shared_ptr<X11Connection> x) : x_(std::move(x)) {}

std::vector<Rect> X11WindowList::windowRects(const ScreenArea& screen) {
    if (!x_ || screen.width <= 0 || screen.height <= 0) {
        return {};
    }
    Display* display = x_->display();
    const Window root = x_->root();
    auto clients = x_->longs(root, "_NET_CLIENT_LIST_STACKING", XA_WINDOW);
    std::reverse(clients.begin(), clients.end());  // bottom to top, made front to back
    const auto current = x_->longs(root, "_NET_CURRENT_DESKTOP", XA_CARDINAL);

    std::vector<Rect> rects;
    for (const unsigned long window : clients) {
        const auto types = x_->longs(window, "_NET_WM_WINDOW_TYPE", XA_ATOM);
        if (std::any_of(kSkippedTypes.begin(), kSkippedTypes.end(),
                        [&](const char* type) { return holdsAtom(types, display, type); })) {
            continue;
        }
        if (holdsAtom(x_->longs(window, "_NET_WM_STATE", XA_ATOM), display,
                      "_NET_WM_STATE_HIDDEN")) {
            continue;
        }
        const auto desktop = x_->longs(window, "_NET_WM_DESKTOP", XA_CARDINAL);
        if (!desktop.empty() && !current.empty() && desktop[0] != current[0] &&
            desktop[0] != kAllDesktops) {
            continue;
        }
        XWindowAttributes attributes{};
        int x = 0;
        int y = 0;
        {
            XErrorTrap trap(display);
            Window child = None;
            if (!XGetWindowAttributes(display, window, &attributes) ||
                attributes.map_state != IsViewable ||
                !XTranslateCoordinates(display, window, root, 0, 0, &x, &y, &child)) {
                continue;
            }
        }
        // The title bar and borders belong to the window: left, right, top, bottom.
        auto frame = x_->longs(window, "_NET_FRAME_EXTENTS", XA_CARDINAL);
        frame.resize(4, 0);
        if (const auto rect = normalisedWindow(
                screen, x - static_cast<double>(frame[0]), y - static_cast<double>(frame[2]),
                attributes.width + static_cast<double>(frame[0] + frame[1]),
                attributes.height + static_cast<double>(frame[2] + frame[3]))) {
            rects.push_back(*rect);
        }
    }
    return rects;
}

}  // namespace tevra
