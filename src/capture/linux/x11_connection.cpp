#include "capture/linux/x11_connection.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <cstring>
#include <vector>

#include "capture/linux/x_error_trap.h"

namespace tevra {
namespace {

// The items of a property, or nothing when it is absent or of another format.
std::vector<unsigned char> property(Display* display, Window window, const char* name, Atom type,
                                    int format, unsigned long* items) {
    *items = 0;
    Atom actualType = 0;
    int actualFormat = 0;
    unsigned long after = 0;
    unsigned char* data = nullptr;
    const Atom atom = XInternAtom(display, name, True);
    if (atom == None ||
        XGetWindowProperty(display, window, atom, 0, 1 << 16, False, type, &actualType,
                           &actualFormat, items, &after, &data) != Success) {
        return {};
    }
    std::vector<unsigned char> out;
    if (data && actualType == type && actualFormat == format && *items > 0) {
        // Format 32 items come back as longs, whatever their size on the wire.
        const std::size_t itemBytes = format == 32 ? sizeof(long) : format / 8;
        out.assign(data, data + *items * itemBytes);
    } else {
        *items = 0;
    }
    if (data) {
        XFree(data);
    }
    return out;
}

unsigned long firstLong(const std::vector<unsigned char>& data) {
    unsigned long value = 0;
    std::memcpy(&value, data.data(), sizeof value);
    return value;
}

}  // namespace

std::shared_ptr<X11Connection> X11Connection::open(const char* displayName) {
    Display* display = XOpenDisplay(displayName);
    if (!display) {
        return nullptr;
    }
    return std::shared_ptr<X11Connection>(new X11Connection(display));
}

X11Connection::~X11Connection() {
    XCloseDisplay(display_);
}

X11Connection::Window X11Connection::root() const {
    return DefaultRootWindow(display_);
}

bool X11Connection::hasExtension(const char* name) const {
    int opcode = 0;
    int event = 0;
    int error = 0;
    return XQueryExtension(display_, name, &opcode, &event, &error);
}

X11Connection::Window X11Connection::activeWindow() const {
    XErrorTrap trap(display_);
    unsigned long items = 0;
    const auto data = property(display_, root(), "_NET_ACTIVE_WINDOW", XA_WINDOW, 32, &items);
    if (items > 0) {
        const Window active = firstLong(data);
        if (active != None) {
            return active;
        }
    }
    Window focus = None;
    int revert = 0;
    XGetInputFocus(display_, &focus, &revert);
    if (focus == None || focus == PointerRoot) {
        return 0;
    }
    return topLevelOf(focus);
}

// Climbs from a focused sub-window to the client window that carries WM_CLASS.
X11Connection::Window X11Connection::topLevelOf(Window window) const {
    while (window != None && window != root()) {
        if (classHintOf(window)) {
            return window;
        }
        Window rootReturn = None;
        Window parent = None;
        Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(display_, window, &rootReturn, &parent, &children, &count)) {
            return 0;
        }
        if (children) {
            XFree(children);
        }
        window = parent;
    }
    return 0;
}

std::vector<X11Connection::Window> X11Connection::clientList() const {
    XErrorTrap trap(display_);
    unsigned long items = 0;
    const auto data = property(display_, root(), "_NET_CLIENT_LIST", XA_WINDOW, 32, &items);
    std::vector<Window> windows(items);
    if (items > 0) {
        std::memcpy(windows.data(), data.data(), items * sizeof(unsigned long));
    }
    return windows;
}

std::optional<X11Connection::ClassHint> X11Connection::classHint(Window window) const {
    XErrorTrap trap(display_);
    return classHintOf(window);
}

std::optional<X11Connection::ClassHint> X11Connection::classHintOf(Window window) const {
    XClassHint hint{nullptr, nullptr};
    if (!XGetClassHint(display_, window, &hint)) {
        return std::nullopt;
    }
    ClassHint out{hint.res_name ? hint.res_name : "", hint.res_class ? hint.res_class : ""};
    XFree(hint.res_name);
    XFree(hint.res_class);
    return out;
}

std::optional<std::string> X11Connection::title(Window window) const {
    XErrorTrap trap(display_);
    unsigned long items = 0;
    const Atom utf8 = XInternAtom(display_, "UTF8_STRING", False);
    const auto name = property(display_, window, "_NET_WM_NAME", utf8, 8, &items);
    if (items > 0) {
        return std::string(name.begin(), name.end());
    }
    XTextProperty text{};
    if (!XGetWMName(display_, window, &text) || !text.value) {
        return std::nullopt;
    }
    std::optional<std::string> out;
    char** list = nullptr;
    int count = 0;
    if (Xutf8TextPropertyToTextList(display_, &text, &list, &count) >= Success && count > 0 &&
        list) {
        out = list[0];
    }
    if (list) {
        XFreeStringList(list);
    }
    XFree(text.value);
    return out;
}

std::int64_t X11Connection::pid(Window window) const {
    XErrorTrap trap(display_);
    unsigned long items = 0;
    const auto data = property(display_, window, "_NET_WM_PID", XA_CARDINAL, 32, &items);
    if (items == 0) {
        return 0;
    }
    return static_cast<std::int64_t>(firstLong(data));
}

std::vector<unsigned long> X11Connection::longs(Window window, const char* name,
                                                unsigned long type) const {
    XErrorTrap trap(display_);
    unsigned long items = 0;
    const auto data = property(display_, window, name, type, 32, &items);
    std::vector<unsigned long> out(items);
    if (items > 0) {
        std::memcpy(out.data(), data.data(), items * sizeof(unsigned long));
    }
    return out;
}

}  // namespace tevra
