#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tevra {

// The kind of graphical session Tevra runs in, and which of the compositor's
// ways in it takes for the keys, the paste and the clipboard. Worked out once
// at start from the environment and the Wayland globals the compositor offers.
struct DesktopSession {
    enum class Kind { x11, wayland };
    enum class Family { gnome, kde, wlroots, other };
    enum class Keys {
        x11Keyboard,  // the talk key watched, chord keys grabbed
        sessionBus,   // a shortcut of the desktop runs tevractl
        // Shortcuts registered with the desktop through its portal (KDE,
        // GNOME 48 and later, Hyprland); tevractl works besides.
        globalShortcutsPortal,
    };
    enum class Paste {
        xtest,
        virtualKeyboard,
        remoteDesktopPortal,  // KDE and GNOME: granted once, then restored
        none,                 // the text stays on the clipboard: "copied — press Ctrl+V"
    };
    enum class Clipboard {
        x11,
        dataControl,
        xwayland,  // the X11 clipboard, which the compositor shares with Wayland
    };

    Kind kind = Kind::x11;
    Family family = Family::other;
    Keys keys = Keys::x11Keyboard;
    Paste paste = Paste::xtest;
    Clipboard clipboard = Clipboard::x11;
    // Wayland only: whether XWayland is there for Tevra's own windows.
    bool xwayland = true;

    // env reads one environment variable (null when unset); globals are the
    // interface names the compositor offered, empty on X11.
    static DesktopSession detect(const std::function<const char*(const char*)>& env,
                                 const std::vector<std::string>& globals);

    // "keys: session bus (tevractl); paste: virtual keyboard; clipboard: data control"
    std::string pathsDescription() const;
    // "Wayland (wlroots)", "X11"
    std::string name() const;
};

}  // namespace tevra
