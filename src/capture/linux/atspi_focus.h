#pragma once

#include <memory>
#include <optional>
#include <string>

namespace tevra {

// The element that has the keyboard focus on the desktop, as the
// accessibility bus (AT-SPI) tells it: GTK, Qt and the browsers publish their
// widgets and send an event whenever the focus moves. A thread of its own
// listens and keeps the focused element, so the main thread never waits on
// the bus to know whether a password field has the focus; and the element is
// the one that has the focus, whatever process it runs in (a sandboxed
// application's accessible is not the process that owns its window).
class AtspiFocus {
public:
    struct Element {
        bool isPassword = false;
        // The element's text, nullopt when it has none; with withText, its last
        // tailCodePoints code points at most.
        std::optional<std::string> text;
    };

    // The first one starts the listening thread, which serves every
    // AtspiFocus of the process until it ends (the accessibility library is
    // one per process); at first it asks the bus once which element has the
    // focus now.
    AtspiFocus();
    ~AtspiFocus();
    AtspiFocus(const AtspiFocus&) = delete;
    AtspiFocus& operator=(const AtspiFocus&) = delete;

    // The focused element; nullopt when none is known (no bus, or the focus
    // is in a window that publishes nothing). Without withText it answers at
    // once from what the events said. With it, the element's text is asked
    // of its application, waiting textWaitMs at most.
    std::optional<Element> focused(bool withText);

    static constexpr int tailCodePoints = 6000;
    static constexpr int textWaitMs = 500;

    // Blocks until the listener has started and made its first look, or the
    // bus proved missing; for tests and the start-up log.
    bool waitUntilListening(int timeoutMs);

private:
    struct Listener;
    static Listener* processListener();
    Listener* listener_;
};

}  // namespace tevra
