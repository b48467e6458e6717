#pragma once

#include <atomic>

namespace tevra {

// The keys that are down now through one of the program's key grabs, over all
// of its keyboards. While one is, the X server has given the whole keyboard to
// Tevra, which is not a sign of a password prompt holding it.
class XOwnGrabs {
public:
    bool active() const { return count_.load() > 0; }
    void add(int keys) { count_ += keys; }

private:
    std::atomic<int> count_{0};
};

}  // namespace tevra
