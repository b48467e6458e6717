#include "capture/linux/x11_clipboard_reader.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "capture/linux/x_error_trap.h"

namespace tevra {
namespace {

using Clock = std::chrono::steady_clock;

// Targets that are the selection protocol's own, not data of the owner's.
bool isProtocolTarget(std::string_view name) {
    static const std::set<std::string_view> protocol = {
        "TARGETS", "TIMESTAMP",        "MULTIPLE",        "SAVE_TARGETS",
        "DELETE",  "INSERT_SELECTION", "INSERT_PROPERTY", "application/x-qt-image"};
    return protocol.contains(name);
}

// Qt offers its "text/plain" under all of these, and lists them as that one
// format: so are they kept, the UTF-8 forms first.
std::string formatName(std::string_view target) {
    static const std::set<std::string_view> text = {"UTF8_STRING", "text/plain;charset=utf-8",
                                                    "STRING", "TEXT", "COMPOUND_TEXT"};
    return text.contains(target) ? "text/plain" : std::string(target);
}

int textRank(std::string_view target) {
    if (target == "UTF8_STRING" || target == "text/plain;charset=utf-8") {
        return 0;
    }
    return formatName(target) == "text/plain" ? 1 : 2;
}

class Conversion {
public:
    Conversion(Display* display, Window window, Clock::time_point deadline)
        : display_(display),
          window_(window),
          deadline_(deadline),
          clipboard_(XInternAtom(display, "CLIPBOARD", False)),
          property_(XInternAtom(display, "TEVRA_CLIPBOARD", False)),
          incr_(XInternAtom(display, "INCR", False)) {}

    // The bytes the owner gives for target; nullopt when it gives none.
    std::optional<std::string> fetch(Atom target) {
        XDeleteProperty(display_, window_, property_);
        XConvertSelection(display_, clipboard_, target, property_, window_, CurrentTime);
        XEvent event;
        if (!waitFor(SelectionNotify, event) || event.xselection.property == None) {
            return std::nullopt;
        }
        Atom type = None;
        std::string bytes = takeProperty(type);
        if (type != incr_) {
            return bytes;
        }
        // Large data comes in pieces, each announced by a new value of the
        // property, until an empty one.
        std::string whole;
        while (waitForNewValue()) {
            const std::string piece = takeProperty(type);
            if (piece.empty()) {
                return whole;
            }
            whole += piece;
        }
        return std::nullopt;
    }

    std::vector<Atom> targets() {
        const Atom targetsAtom = XInternAtom(display_, "TARGETS", False);
        const auto list = fetch(targetsAtom);
        std::vector<Atom> atoms;
        if (!list) {
            return atoms;
        }
        // Format-32 properties come as longs.
        const size_t count = list->size() / sizeof(long);
        for (size_t i = 0; i < count; ++i) {
            long value = 0;
            std::memcpy(&value, list->data() + i * sizeof(long), sizeof(long));
            atoms.push_back(static_cast<Atom>(value));
        }
        return atoms;
    }

private:
    std::string takeProperty(Atom& type) {
        std::string bytes;
        long offset = 0;
        for (;;) {
            int format = 0;
            unsigned long items = 0;
            unsigned long after = 0;
            unsigned char* data = nullptr;
            if (XGetWindowProperty(display_, window_, property_, offset, 1 << 20, False,
                                   AnyPropertyType, &type, &format, &items, &after,
                                   &data) != Success) {
                break;
            }
            const size_t unit = format == 32 ? sizeof(long) : static_cast<size_t>(format / 8);
            if (data != nullptr) {
                bytes.append(reinterpret_cast<const char*>(data), items * unit);
                XFree(data);
            }
            offset += static_cast<long>(items * unit / 4);
            if (after == 0) {
                break;
            }
        }
        // Deleting the property asks an INCR owner for the next piece.
        XDeleteProperty(display_, window_, property_);
        XFlush(display_);
        return bytes;
    }

    bool waitForNewValue() {
        XEvent event;
        while (waitFor(PropertyNotify, event)) {
            if (event.xproperty.atom == property_ && event.xproperty.state == PropertyNewValue) {
                return true;
            }
        }
        return false;
    }

    // The next event of that type for our window, waiting no longer than the
    // conversion's limit and the snapshot's deadline.
    bool waitFor(int type, XEvent& event) {
        const auto limit = std::min(
            deadline_,
            Clock::now() + std::chrono::milliseconds(X11ClipboardReader::conversionWaitMs));
        for (;;) {
            if (XCheckTypedWindowEvent(display_, window_, type, &event)) {
                return true;
            }
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(limit - Clock::now());
            if (left.count() <= 0) {
                return false;
            }
            pollfd fd{ConnectionNumber(display_), POLLIN, 0};
            ::poll(&fd, 1, static_cast<int>(left.count()));
        }
    }

    Display* display_;
    Window window_;
    Clock::time_point deadline_;
    Atom clipboard_;
    Atom property_;
    Atom incr_;
};

}  // namespace

X11ClipboardReader::X11ClipboardReader(MainQueue& queue, std::string displayName)
    : queue_(queue), displayName_(std::move(displayName)) {}

X11ClipboardReader::~X11ClipboardReader() {
    work_.sync([this] {
        if (display_) {
            XCloseDisplay(display_);
            display_ = nullptr;
        }
    });
}

void X11ClipboardReader::read(std::function<void(ClipboardSnapshot)> done) {
    work_.async([this, done = std::move(done)]() mutable {
        ClipboardSnapshot snapshot = readNow();
        queue_.post([done = std::move(done), snapshot = std::move(snapshot)]() mutable {
            done(std::move(snapshot));
        });
    });
}

ClipboardSnapshot X11ClipboardReader::readNow() {
    if (!display_) {
        display_ = XOpenDisplay(displayName_.empty() ? nullptr : displayName_.c_str());
        if (!display_) {
            return {};
        }
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
        XSelectInput(display_, window_, PropertyChangeMask);
    }
    Conversion conversion(display_, window_, Clock::now() + std::chrono::milliseconds(totalWaitMs));
    struct Target {
        Atom atom;
        std::string name;
    };
    std::vector<Target> targets;
    const std::vector<Atom> offered = conversion.targets();
    {
        // An owner may list an atom that does not exist. The trap is held only
        // this long: it stops every other thread's X error handling meanwhile.
        XErrorTrap trap(display_);
        for (Atom atom : offered) {
            char* name = XGetAtomName(display_, atom);
            if (name && !isProtocolTarget(name)) {
                targets.push_back({atom, name});
            }
            if (name) {
                XFree(name);
            }
        }
        trap.sync();
    }
    // The owner's order, but the best form of the text first.
    std::stable_sort(targets.begin(), targets.end(), [](const Target& a, const Target& b) {
        return textRank(a.name) < textRank(b.name);
    });
    ClipboardData item;
    std::set<std::string> kept;
    for (const Target& target : targets) {
        const std::string format = formatName(target.name);
        if (kept.contains(format)) {
            continue;
        }
        // A format whose owner gives no data is left out; the others survive.
        if (auto bytes = conversion.fetch(target.atom); bytes && !bytes->empty()) {
            item.formats.emplace_back(format, std::move(*bytes));
            kept.insert(format);
        }
    }
    if (item.formats.empty()) {
        return {};
    }
    return {std::move(item)};
}

}  // namespace tevra
