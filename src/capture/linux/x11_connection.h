#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

typedef struct _XDisplay Display;

namespace tevra {

// One Xlib connection to the display, with the window queries that the
// capture seams share. An X error (a window that went away between two
// requests) is never fatal: the query that met it gives no value. Main thread
// only.
class X11Connection {
public:
    using Window = unsigned long;

    struct ClassHint {
        std::string instance;
        std::string className;
    };

    // nullptr when no display can be opened ($DISPLAY unset or unreachable).
    static std::shared_ptr<X11Connection> open(const char* displayName = nullptr);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    Display* display() const { return display_; }
    Window root() const;
    bool hasExtension(const char* name) const;

    // The window that the window manager calls active, or else the top-level
    // window holding the input focus; 0 when there is none.
    Window activeWindow() const;
    std::optional<ClassHint> classHint(Window window) const;
    // _NET_CLIENT_LIST: the windows the window manager manages, oldest first;
    // empty without a window manager that keeps it.
    std::vector<Window> clientList() const;
    // _NET_WM_NAME, or WM_NAME for clients that set only that.
    std::optional<std::string> title(Window window) const;
    // _NET_WM_PID; 0 when the client does not say.
    std::int64_t pid(Window window) const;
    // The items of a 32-bit property of the given type (an Atom: XA_CARDINAL,
    // XA_WINDOW, XA_ATOM); empty when it is absent or of another type.
    std::vector<unsigned long> longs(Window window, const char* name, unsigned long type) const;

private:
    explicit X11Connection(Display* display) : display_(display) {}
    // Both run inside the caller's error trap.
    Window topLevelOf(Window window) const;
    std::optional<ClassHint> classHintOf(Window window) const;

    Display* display_;
};

}  // namespace tevra
