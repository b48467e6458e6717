#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

namespace tevra {

// Work that must happen one piece at a time, in order, on one thread of its
// own: the database handle, the log file, audio buffers. Tasks never throw
// out of the queue: an exception from an async task is dropped there.
class SerialQueue {
public:
    explicit SerialQueue(std::string label);
    // Runs what was queued, then stops the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return label_; }

    void async(std::function<void()> task);

    // Runs task on the queue and waits for its result. Calling sync from a task
    // of the same queue would wait forever, so it runs the task in place.
    template <typename F>
    auto sync(F&& task) -> decltype(task()) {
        if (isCurrent()) {
            return task();
        }
        std::packaged_task<decltype(task())()> packaged(std::forward<F>(task));
        auto result = packaged.get_future();
        enqueue([&packaged] { packaged(); });
        return result.get();
    }

    // True on the queue's own thread.
    bool isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }

private:
    void enqueue(std::function<void()> task);
    void run();

    std::string label_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace tevra
