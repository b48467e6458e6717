#pragma once

#include <chrono>
#include <deque>
#include <mutex>

#include "capture/key_injector.h"

namespace tevra {

// The keys Tevra itself is about to send through XTest, so that its own
// keyboards do not take them for the user's: with the talk key set to
// Control_L, a paste's Ctrl would otherwise look like a talk-key tap. The
// injector announces each stroke before sending it; a keyboard that sees a
// stroke of the XTest device claims the first announced one that matches.
class XSyntheticKeys {
public:
    void expect(const KeySequence& strokes) {
        std::lock_guard lock(mutex_);
        const auto now = Clock::now();
        for (const KeyStroke& stroke : strokes) {
            pending_.push_back({stroke, now});
        }
    }

    // True when the stroke was announced (and it is no longer pending).
    bool claim(unsigned keycode, bool down) {
        std::lock_guard lock(mutex_);
        // A stroke the server never reported (a key the keyboard lacks) must
        // not wait forever for its match.
        const auto stale = Clock::now() - kLifetime;
        while (!pending_.empty() && pending_.front().announced < stale) {
            pending_.pop_front();
        }
        for (auto it = pending_.begin(); it != pending_.end(); ++it) {
            if (it->stroke == KeyStroke{keycode, down}) {
                pending_.erase(it);
                return true;
            }
        }
        return false;
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kLifetime{2};
    struct Pending {
        KeyStroke stroke;
        Clock::time_point announced;
    };

    std::mutex mutex_;
    std::deque<Pending> pending_;
};

}  // namespace tevra
