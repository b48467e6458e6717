#include "capture/desktop_session.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"

namespace tevra {
namespace {

bool has(const std::vector<std::string>& globals, std::string_view name) {
    return std::find(globals.begin(), globals.end(), name) != globals.end();
}

bool set(const char* value) {
    return value != nullptr && *value != '\0';
}

DesktopSession::Family familyOf(const char* currentDesktop,
                                const std::vector<std::string>& globals) {
    // XDG_CURRENT_DESKTOP is a colon-separated list such as "ubuntu:GNOME".
    const std::string desktops = text::lowercase(currentDesktop ? currentDesktop : "");
    if (desktops.find("gnome") != std::string::npos) {
        return DesktopSession::Family::gnome;
    }
    if (desktops.find("kde") != std::string::npos) {
        return DesktopSession::Family::kde;
    }
    // What only the wlroots compositors (sway, Hyprland, river, labwc) offer.
    if (has(globals, "zwlr_layer_shell_v1") || has(globals, "zwlr_foreign_toplevel_manager_v1")) {
        return DesktopSession::Family::wlroots;
    }
    return DesktopSession::Family::other;
}

}  // namespace

DesktopSession DesktopSession::detect(const std::function<const char*(const char*)>& env,
                                      const std::vector<std::string>& globals) {
    DesktopSession session;
    const char* type = env("XDG_SESSION_TYPE");
    const bool wayland =
        set(env("WAYLAND_DISPLAY")) || (type != nullptr && std::string_view(type) == "wayland");
    if (!wayland) {
        return session;
    }
    session.kind = Kind::wayland;
    session.family = familyOf(env("XDG_CURRENT_DESKTOP"), globals);
    session.xwayland = set(env("DISPLAY"));
    // The desktops whose portal has Global Shortcuts; on the others, and on
    // GNOME before 48, the user binds tevractl by hand.
    const std::string desktops =
        text::lowercase(env("XDG_CURRENT_DESKTOP") ? env("XDG_CURRENT_DESKTOP") : "");
    session.keys = session.family == Family::kde || session.family == Family::gnome ||
                           desktops.find("hyprland") != std::string::npos
                       ? Keys::globalShortcutsPortal
                       : Keys::sessionBus;
    if (has(globals, "zwp_virtual_keyboard_manager_v1")) {
        session.paste = Paste::virtualKeyboard;
    } else if (session.family == Family::kde || session.family == Family::gnome) {
        // Whether the portal grants it is known only later; until it does,
        // the text stays on the clipboard.
        session.paste = Paste::remoteDesktopPortal;
    } else {
        session.paste = Paste::none;
    }
    session.clipboard =
        has(globals, "zwlr_data_control_manager_v1") ? Clipboard::dataControl : Clipboard::xwayland;
    // A paste chord with no way to set the clipboard first would paste
    // whatever was there before.
    if (session.clipboard == Clipboard::xwayland && !session.xwayland) {
        session.paste = Paste::none;
    }
    return session;
}

std::string DesktopSession::pathsDescription() const {
    std::string keysPath;
    switch (keys) {
        case Keys::x11Keyboard:
            keysPath = "X11 keyboard";
            break;
        case Keys::sessionBus:
            keysPath = "session bus (tevractl on a shortcut of the desktop)";
            break;
        case Keys::globalShortcutsPortal:
            keysPath = "global shortcuts portal";
            break;
    }
    std::string pastePath;
    switch (paste) {
        case Paste::xtest:
            pastePath = "XTest";
            break;
        case Paste::virtualKeyboard:
            pastePath = "virtual keyboard";
            break;
        case Paste::remoteDesktopPortal:
            pastePath = "remote desktop portal";
            break;
        case Paste::none:
            pastePath = "none (copied \u2014 press Ctrl+V)";
            break;
    }
    std::string clipboardPath;
    switch (clipboard) {
        case Clipboard::x11:
            clipboardPath = "X11";
            break;
        case Clipboard::dataControl:
            clipboardPath = "data control";
            break;
        case Clipboard::xwayland:
            clipboardPath = xwayland ? "XWayland" : "none";
            break;
    }
    return "keys: " + keysPath + "; paste: " + pastePath + "; clipboard: " + clipboardPath;
}

std::string DesktopSession::name() const {
    if (kind == Kind::x11) {
        return "X11";
    }
    switch (family) {
        case Family::gnome:
            return "Wayland (GNOME)";
        case Family::kde:
            return "Wayland (KDE)";
        case Family::wlroots:
            return "Wayland (wlroots)";
        case Family::other:
            break;
    }
    return "Wayland";
}

}  // namespace tevra
