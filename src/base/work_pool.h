#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tevra {

// Background threads for blocking work that may overlap: a dictation still
// being transcribed while the next is already under way. Tasks start in the
// order given, up to `threads` at once. Tasks never throw out of the pool: an
// exception from a task is dropped there.
class WorkPool {
public:
    explicit WorkPool(std::size_t threads);
    // Lets every queued task run to its end, then stops the threads.
    ~WorkPool();
    WorkPool(const WorkPool&) = delete;
    WorkPool& operator=(const WorkPool&) = delete;

    void run(std::function<void()> task);
    // Blocks until no task is queued or running.
    void waitUntilIdle();

private:
    void work();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::size_t running_ = 0;
    std::deque<std::function<void()>> tasks_;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace tevra
