#pragma once

#include <mutex>
#include <set>

namespace tevra {

// Whether one of the program's keyboards has the X keyboard to itself right
// now, because a key it grabbed is down and the server made that grab active.
// Then the keyboard is held by Tevra, which is no sign of a password prompt
// holding it. Each keyboard says for itself; any thread may ask.
class XOwnGrabs {
public:
    bool active() const {
        std::lock_guard lock(mutex_);
        return !holders_.empty();
    }
    void set(const void* keyboard, bool holding) {
        std::lock_guard lock(mutex_);
        if (holding) {
            holders_.insert(keyboard);
        } else {
            holders_.erase(keyboard);
        }
    }

private:
    mutable std::mutex mutex_;
    std::set<const void*> holders_;
};

}  // namespace tevra
