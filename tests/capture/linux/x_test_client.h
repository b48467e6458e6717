#pragma once

#include <X11/Xlib.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "base/virtual_main_queue.h"

namespace tevra::testing {

// Why the X tests cannot run here, or empty when they can: an X display and
// xdotool are needed.
std::string missingForXTests();

// Runs xdotool with the given arguments; false when it failed.
bool xdotool(const std::string& arguments);

// Runs what the main queue is given until done() holds; false at the deadline.
bool waitUntil(VirtualMainQueue& queue, const std::function<bool()>& done, double seconds = 5);

// Another X client on the display: a focused window that records the keys it
// receives, and key grabs of its own, as an application might hold.
class XTestClient {
public:
    XTestClient();
    ~XTestClient();
    XTestClient(const XTestClient&) = delete;
    XTestClient& operator=(const XTestClient&) = delete;

    bool connected() const { return display_ != nullptr; }
    // Maps a window and gives it the input focus; false when it never got it.
    bool showFocusedWindow();
    // Grabs the key with the modifiers, as held by this client; false when refused.
    bool grabKey(KeySym keysym, unsigned modifiers);
    // Sets the server's auto-repeat; the previous values come back at destruction.
    void setAutoRepeat(unsigned delayMs, unsigned intervalMs);

    // Reads events until a press of keysym has arrived; false at the deadline.
    bool waitForPress(KeySym keysym, double seconds = 5);
    // How many presses (or releases) of keysym this client has received.
    int presses(KeySym keysym) const { return count(keysym, true); }
    int releases(KeySym keysym) const { return count(keysym, false); }

private:
    void readEvents(int timeoutMs);
    int count(KeySym keysym, bool press) const;

    Display* display_ = nullptr;
    Window window_ = 0;
    bool focused_ = false;
    std::vector<std::pair<KeySym, bool>> keys_;  // (symbol, press)
    bool repeatChanged_ = false;
    unsigned oldDelay_ = 0;
    unsigned oldInterval_ = 0;
};

}  // namespace tevra::testing
