#include "capture/desktop_session.h"

#include <gtest/gtest.h>

#include <map>

namespace tevra {
namespace {

TEST(DesktopSessionTest, TakesWhatTheSessionOffersAndSaysWhich) {
    const std::vector<std::string> wlroots = {"wl_seat", "zwlr_layer_shell_v1",
                                              "zwlr_data_control_manager_v1",
                                              "zwp_virtual_keyboard_manager_v1"};
    const std::vector<std::string> kwin = {"wl_seat", "zwlr_data_control_manager_v1",
                                           "org_kde_kwin_fake_input"};
    const std::vector<std::string> mutter = {"wl_seat", "gtk_shell1"};
    struct Row {
        std::map<std::string, std::string> env;
        std::vector<std::string> globals;
        std::string name;
        std::string paths;
    };
    const Row rows[] = {
        {{{"DISPLAY", ":0"}, {"XDG_SESSION_TYPE", "x11"}},
         {},
         "X11",
         "keys: X11 keyboard; paste: XTest; clipboard: X11"},
        {{{"WAYLAND_DISPLAY", "wayland-1"}, {"DISPLAY", ":0"}, {"XDG_CURRENT_DESKTOP", "sway"}},
         wlroots,
         "Wayland (wlroots)",
         "keys: session bus (tevractl on a shortcut of the desktop); paste: virtual keyboard; "
         "clipboard: data control"},
        // KDE has data control but no virtual keyboard for ordinary clients.
        {{{"WAYLAND_DISPLAY", "wayland-0"}, {"DISPLAY", ":1"}, {"XDG_CURRENT_DESKTOP", "KDE"}},
         kwin,
         "Wayland (KDE)",
         "keys: global shortcuts portal; paste: remote desktop portal; clipboard: data control"},
        // GNOME: no data control; the clipboard is shared with XWayland's.
        {{{"XDG_SESSION_TYPE", "wayland"},
          {"DISPLAY", ":0"},
          {"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"}},
         mutter,
         "Wayland (GNOME)",
         "keys: global shortcuts portal; paste: remote desktop portal; clipboard: XWayland"},
        // Hyprland: wlroots' protocols, and a portal with global shortcuts.
        {{{"WAYLAND_DISPLAY", "wayland-1"}, {"DISPLAY", ":0"}, {"XDG_CURRENT_DESKTOP", "Hyprland"}},
         wlroots,
         "Wayland (wlroots)",
         "keys: global shortcuts portal; paste: virtual keyboard; clipboard: data control"},
        // No XWayland and no data control: no clipboard at all, so no paste.
        {{{"WAYLAND_DISPLAY", "wayland-0"}},
         {"wl_seat", "zwp_virtual_keyboard_manager_v1"},
         "Wayland",
         "keys: session bus (tevractl on a shortcut of the desktop); paste: none (copied \u2014 "
         "press Ctrl+V); clipboard: none"},
    };
    for (const Row& row : rows) {
        const auto session = DesktopSession::detect(
            [&](const char* name) {
                const auto found = row.env.find(name);
                return found == row.env.end() ? nullptr : found->second.c_str();
            },
            row.globals);
        EXPECT_EQ(session.name(), row.name);
        EXPECT_EQ(session.pathsDescription(), row.paths) << row.name;
    }
}

}  // namespace
}  // namespace tevra
