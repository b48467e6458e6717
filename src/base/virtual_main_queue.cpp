#include "base/virtual_main_queue.h"

#include <chrono>
#include <condition_variable>

namespace tevra {

VirtualMainQueue::VirtualMainQueue() : mainThread_(std::this_thread::get_id()) {}

void VirtualMainQueue::post(Task task) {
    {
        std::lock_guard lock(mutex_);
        entries_.emplace(Key{now_, sequence_++},
                         Entry{std::move(task), std::make_shared<std::atomic<bool>>(false), 0});
    }
    posted_.notify_all();
}

TimerHandle VirtualMainQueue::schedule(double due, Task task, double interval) {
    auto cancelled = std::make_shared<std::atomic<bool>>(false);
    std::lock_guard lock(mutex_);
    entries_.emplace(Key{due, sequence_++}, Entry{std::move(task), cancelled, interval});
    return TimerHandle(cancelled);
}

TimerHandle VirtualMainQueue::after(double seconds, Task task) {
    return schedule(now() + std::max(seconds, 0.0), std::move(task), 0);
}

TimerHandle VirtualMainQueue::every(double intervalSeconds, Task task) {
    const double interval = std::max(intervalSeconds, 1e-6);
    return schedule(now() + interval, std::move(task), interval);
}

double VirtualMainQueue::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

bool VirtualMainQueue::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

bool VirtualMainQueue::runOneDueBy(double time) {
    Entry entry;
    double due = 0;
    {
        std::lock_guard lock(mutex_);
        auto it = entries_.begin();
        while (it != entries_.end() && *it->second.cancelled) {
            it = entries_.erase(it);
        }
        if (it == entries_.end() || it->first.first > time) {
            return false;
        }
        due = it->first.first;
        entry = std::move(it->second);
        entries_.erase(it);
        now_ = std::max(now_, due);
        if (entry.interval > 0) {
            // Re-arm before running, so that the task may cancel its own timer.
            entries_.emplace(Key{due + entry.interval, sequence_++}, entry);
        }
    }
    entry.task();
    return true;
}

int VirtualMainQueue::runPending() {
    int ran = 0;
    while (runOneDueBy(now())) {
        ++ran;
    }
    return ran;
}

void VirtualMainQueue::advance(double seconds) {
    const double target = now() + seconds;
    while (runOneDueBy(target)) {
    }
    std::lock_guard lock(mutex_);
    now_ = std::max(now_, target);
}

bool VirtualMainQueue::waitForPosted(double timeoutSeconds) {
    {
        std::unique_lock lock(mutex_);
        const bool arrived =
            posted_.wait_for(lock, std::chrono::duration<double>(timeoutSeconds), [this] {
                for (const auto& [key, entry] : entries_) {
                    if (key.first <= now_ && !*entry.cancelled) {
                        return true;
                    }
                }
                return false;
            });
        if (!arrived) {
            return false;
        }
    }
    runPending();
    return true;
}

int VirtualMainQueue::pendingCount() const {
    std::lock_guard lock(mutex_);
    int count = 0;
    for (const auto& [key, entry] : entries_) {
        if (!*entry.cancelled) {
            ++count;
        }
    }
    return count;
}

}  // namespace tevra
