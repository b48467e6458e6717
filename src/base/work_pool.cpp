#include "base/work_pool.h"

namespace tevra {

WorkPool::WorkPool(std::size_t threads) {
    threads_.reserve(threads);
    for (std::size_t i = 0; i < threads; ++i) {
        threads_.emplace_back([this] { work(); });
    }
}

WorkPool::~WorkPool() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void WorkPool::run(std::function<void()> task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
}

void WorkPool::waitUntilIdle() {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [this] { return tasks_.empty() && running_ == 0; });
}

void WorkPool::work() {
    for (;;) {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
            if (tasks_.empty()) {
                return;
            }
            task = std::move(tasks_.front());
            tasks_.pop_front();
            ++running_;
        }
        try {
            task();
        } catch (...) {
            // Nothing may leave a worker thread; the task reports its own failures.
        }
        task = nullptr;  // what it captured goes before the pool counts it done
        {
            std::lock_guard lock(mutex_);
            --running_;
        }
        idle_.notify_all();
    }
}

}  // namespace tevra
