#pragma once

#include <chrono>
#include <functional>

#include "base/virtual_main_queue.h"

namespace tevra::testing {

// Runs what other threads post to the main queue until done() holds or the
// deadline passes; true when done() held. It sleeps only while nothing
// arrives, so a condition met by posted work is seen at once.
inline bool runMainQueueUntil(VirtualMainQueue& queue, const std::function<bool()>& done,
                              double seconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    queue.runPending();
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        queue.waitForPosted(0.05);
    }
    return true;
}

}  // namespace tevra::testing
