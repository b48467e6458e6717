#pragma once

#include <X11/Xlib.h>

#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace tevra {

// One X display connection served by a thread of its own. The thread reads
// the display's events and hands each to the event handler; other threads run
// work on the display through call(), which waits for its result. Only this
// thread ever touches the Display, so Xlib needs no locking and an error trap
// sees only its own requests.
class XDisplayThread {
public:
    using EventHandler = std::function<void(Display*, XEvent&)>;

    // Connects to displayName ($DISPLAY when empty) on a new thread. None when
    // the display cannot be opened; error then says why.
    static std::unique_ptr<XDisplayThread> open(const std::string& displayName, std::string& error);
    // Stops the thread and closes the connection, which gives back every grab.
    ~XDisplayThread();

    XDisplayThread(const XDisplayThread&) = delete;
    XDisplayThread& operator=(const XDisplayThread&) = delete;

    // Runs work on the display's thread and returns its result. From the
    // display's own thread (an event handler) it runs at once.
    template <typename Work>
    auto call(Work work) -> decltype(work(static_cast<Display*>(nullptr))) {
        using Result = decltype(work(static_cast<Display*>(nullptr)));
        if (std::this_thread::get_id() == thread_.get_id()) {
            return work(display_);
        }
        auto task = std::make_shared<std::packaged_task<Result()>>(
            [this, work = std::move(work)]() mutable { return work(display_); });
        auto result = task->get_future();
        enqueue([task] { (*task)(); });
        return result.get();
    }

    // Replaces the handler of the events read from now on.
    void setEventHandler(EventHandler handler);

private:
    XDisplayThread() = default;
    void enqueue(std::function<void()> work);
    void run(const std::string& displayName, std::promise<std::string> opened);
    bool runQueuedWork();
    void wake();

    Display* display_ = nullptr;
    int wakeFd_ = -1;
    std::thread thread_;
    std::mutex mutex_;
    std::deque<std::function<void()>> work_;
    bool stopping_ = false;
    EventHandler handler_;
};

}  // namespace tevra
