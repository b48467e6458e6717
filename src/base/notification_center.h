#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/main_queue.h"

namespace tevra {

struct NotificationRegistry;

// Keeps one observer registered: destroying or cancelling it removes the
// observer, and a delivery that is already queued then no longer reaches it.
class NotificationObserver {
public:
    NotificationObserver() = default;
    ~NotificationObserver() { cancel(); }
    NotificationObserver(NotificationObserver&& other) noexcept;
    NotificationObserver& operator=(NotificationObserver&& other) noexcept;
    NotificationObserver(const NotificationObserver&) = delete;
    NotificationObserver& operator=(const NotificationObserver&) = delete;

    void cancel();

private:
    friend class NotificationCenter;
    NotificationObserver(std::weak_ptr<NotificationRegistry> registry, uint64_t id)
        : registry_(std::move(registry)), id_(id) {}

    std::weak_ptr<NotificationRegistry> registry_;
    uint64_t id_ = 0;
};

// Named notifications within the process, such as "weft.settingsChanged".
// Observers always run on the main queue: post() may be called from any thread
// and never runs an observer itself, not even on the main thread.
class NotificationCenter {
public:
    explicit NotificationCenter(MainQueue& mainQueue);

    [[nodiscard]] NotificationObserver observe(std::string name, std::function<void()> callback);
    void post(std::string name);

private:
    std::shared_ptr<NotificationRegistry> registry_;
};

}  // namespace tevra
