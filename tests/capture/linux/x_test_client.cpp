#include "capture/linux/x_test_client.h"

#include <X11/XKBlib.h>
#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "capture/linux/x_error_trap.h"

namespace tevra::testing {

namespace {

using Clock = std::chrono::steady_clock;

double secondsLeft(Clock::time_point deadline) {
    return std::chrono::duration<double>(deadline - Clock::now()).count();
}

}  // namespace

std::string missingForXTests() {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        return "no X display (DISPLAY is not set): run the tests through scripts/test-env, "
               "which starts Xvfb and openbox";
    }
    if (std::system("command -v xdotool >/dev/null 2>&1") != 0) {
        return "xdotool is missing: run scripts/install-deps";
    }
    return {};
}

bool xdotool(const std::string& arguments) {
    return std::system(("xdotool " + arguments).c_str()) == 0;
}

bool waitUntil(VirtualMainQueue& queue, const std::function<bool()>& done, double seconds) {
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(seconds));
    queue.runPending();
    while (!done()) {
        const double left = secondsLeft(deadline);
        if (left <= 0) {
            return false;
        }
        queue.waitForPosted(left);
    }
    return true;
}

XTestClient::XTestClient() : display_(XOpenDisplay(nullptr)) {}

XTestClient::~XTestClient() {
    if (display_ == nullptr) {
        return;
    }
    if (repeatChanged_) {
        XkbSetAutoRepeatRate(display_, XkbUseCoreKbd, oldDelay_, oldInterval_);
    }
    XCloseDisplay(display_);
}

bool XTestClient::showFocusedWindow() {
    const int screen = DefaultScreen(display_);
    window_ = XCreateSimpleWindow(display_, RootWindow(display_, screen), 10, 10, 300, 200, 0,
                                  BlackPixel(display_, screen), WhitePixel(display_, screen));
    XSelectInput(display_, window_,
                 KeyPressMask | KeyReleaseMask | FocusChangeMask | StructureNotifyMask);
    XStoreName(display_, window_, "tevra key test");
    XMapRaised(display_, window_);
    const auto deadline = Clock::now() + std::chrono::seconds(5);
    bool mapped = false;
    while (!focused_ && secondsLeft(deadline) > 0) {
        if (mapped) {
            XSetInputFocus(display_, window_, RevertToParent, CurrentTime);
        } else {
            // A window manager still starting up may have missed the first request.
            XMapRaised(display_, window_);
        }
        readEvents(100);
        if (!mapped) {
            XWindowAttributes attributes;
            XGetWindowAttributes(display_, window_, &attributes);
            mapped = attributes.map_state == IsViewable;
        }
    }
    return focused_;
}

bool XTestClient::grabKey(KeySym keysym, unsigned modifiers) {
    const KeyCode code = XKeysymToKeycode(display_, keysym);
    XErrorTrap trap(display_);
    for (unsigned locks :
         {0u, unsigned{LockMask}, unsigned{Mod2Mask}, unsigned{LockMask | Mod2Mask}}) {
        XGrabKey(display_, code, modifiers | locks, DefaultRootWindow(display_), False,
                 GrabModeAsync, GrabModeAsync);
    }
    return trap.sync() == 0;
}

void XTestClient::setAutoRepeat(unsigned delayMs, unsigned intervalMs) {
    if (!repeatChanged_) {
        XkbGetAutoRepeatRate(display_, XkbUseCoreKbd, &oldDelay_, &oldInterval_);
        repeatChanged_ = true;
    }
    XkbSetAutoRepeatRate(display_, XkbUseCoreKbd, delayMs, intervalMs);
    XSync(display_, False);
}

bool XTestClient::waitForPress(KeySym keysym, double seconds) {
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(seconds));
    while (presses(keysym) == 0) {
        const double left = secondsLeft(deadline);
        if (left <= 0) {
            return false;
        }
        readEvents(static_cast<int>(left * 1000) + 1);
    }
    return true;
}

void XTestClient::readEvents(int timeoutMs) {
    XFlush(display_);
    if (XPending(display_) == 0) {
        pollfd fd{ConnectionNumber(display_), POLLIN, 0};
        ::poll(&fd, 1, timeoutMs);
    }
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == KeyPress || event.type == KeyRelease) {
            keys_.emplace_back(XLookupKeysym(&event.xkey, 0), event.type == KeyPress);
        } else if (event.type == FocusIn && event.xfocus.window == window_) {
            focused_ = true;
        } else if (event.type == FocusOut && event.xfocus.window == window_ &&
                   event.xfocus.mode == NotifyNormal) {
            focused_ = false;
        }
    }
}

int XTestClient::count(KeySym keysym, bool press) const {
    return static_cast<int>(std::count(keys_.begin(), keys_.end(), std::pair{keysym, press}));
}

}  // namespace tevra::testing
