#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tevra {

// Shortcuts that the desktop itself watches for Tevra (the Global Shortcuts
// portal): Tevra names and describes them and suggests a key for each; the
// user may give them other keys in the desktop's settings, and the desktop
// tells when one goes down and comes up.
class GlobalShortcuts {
public:
    struct Shortcut {
        std::string id;  // stable across versions: the desktop keeps the user's key by it
        std::string description;
        // In the portal's notation ("ALT+1"); empty for none.
        std::string preferredTrigger;

        friend bool operator==(const Shortcut&, const Shortcut&) = default;
    };
    struct Handlers {
        // A shortcut went down or came up, at seconds on a monotonic clock.
        std::function<void(const std::string& id, double at)> activated;
        std::function<void(const std::string& id, double at)> deactivated;
        // The desktop refused them or has no such service, in words for the log.
        std::function<void(const std::string& reason)> failed;
    };

    virtual ~GlobalShortcuts() = default;

    // Registers the shortcuts; the desktop answers later, and from then on
    // the handlers run on the main thread.
    virtual void bind(const std::vector<Shortcut>& shortcuts, Handlers handlers) = 0;
    // Ends the registration; no handler runs afterwards.
    virtual void close() = 0;
};

}  // namespace tevra
