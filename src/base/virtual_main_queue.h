#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "base/main_queue.h"

namespace tevra {

// A main queue on virtual time, for tests and for programs without an event
// loop. Nothing runs until the owner drains it: runPending() runs what is due
// now; advance(seconds) moves the clock and fires timers in time order.
class VirtualMainQueue : public MainQueue {
public:
    VirtualMainQueue();

    void post(Task task) override;
    TimerHandle after(double seconds, Task task) override;
    TimerHandle every(double intervalSeconds, Task task) override;
    double now() const override;
    bool isMainThread() const override;

    // Runs every task due at the current time, including ones they post.
    // Returns how many ran.
    int runPending();
    // Moves time forward by seconds, running each task at its due time.
    void advance(double seconds);
    // Blocks until a task posted from another thread arrives, then runs what
    // is due. Returns false when nothing arrived within timeoutSeconds of real time.
    bool waitForPosted(double timeoutSeconds);
    // Number of scheduled tasks that are not cancelled.
    int pendingCount() const;

private:
    struct Entry {
        Task task;
        std::shared_ptr<std::atomic<bool>> cancelled;
        double interval = 0;  // > 0 for repeating timers
    };
    using Key = std::pair<double, uint64_t>;  // due time, then order of scheduling

    TimerHandle schedule(double due, Task task, double interval);
    bool runOneDueBy(double time);

    mutable std::mutex mutex_;
    std::condition_variable posted_;
    std::multimap<Key, Entry> entries_;
    uint64_t sequence_ = 0;
    double now_ = 0;
    std::thread::id mainThread_;
};

}  // namespace tevra
