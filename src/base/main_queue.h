#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace tevra {

// A timer or delayed task that can be called off. Copies share one timer.
class TimerHandle {
public:
    TimerHandle() = default;
    explicit TimerHandle(std::shared_ptr<std::atomic<bool>> cancelled)
        : cancelled_(std::move(cancelled)) {}

    void cancel() {
        if (cancelled_) {
            *cancelled_ = true;
        }
    }
    bool isCancelled() const { return !cancelled_ || *cancelled_; }

private:
    std::shared_ptr<std::atomic<bool>> cancelled_;
};

// The program's main thread: all orchestration, every timer and every UI change
// run here. The application drives it with its event loop; tests drive a
// virtual-time implementation, so that a 180 s limit takes microseconds.
class MainQueue {
public:
    using Task = std::function<void()>;

    virtual ~MainQueue() = default;

    // Runs task on the main thread soon after. Safe from any thread.
    virtual void post(Task task) = 0;
    // Runs task once, seconds from now. Main thread only.
    virtual TimerHandle after(double seconds, Task task) = 0;
    // Runs task every interval seconds until cancelled. Main thread only.
    virtual TimerHandle every(double intervalSeconds, Task task) = 0;
    // Monotonic seconds.
    virtual double now() const = 0;
    virtual bool isMainThread() const = 0;
};

}  // namespace tevra
