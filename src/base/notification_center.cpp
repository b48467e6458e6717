#include "base/notification_center.h"

#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace tevra {

struct NotificationRegistry {
    struct Entry {
        std::string name;
        std::shared_ptr<const std::function<void()>> callback;
    };

    explicit NotificationRegistry(MainQueue& queue) : mainQueue(queue) {}

    MainQueue& mainQueue;
    std::mutex mutex;
    std::map<uint64_t, Entry> entries;  // in order of registration
    uint64_t nextID = 1;
};

NotificationObserver::NotificationObserver(NotificationObserver&& other) noexcept
    : registry_(std::move(other.registry_)), id_(std::exchange(other.id_, 0)) {}

NotificationObserver& NotificationObserver::operator=(NotificationObserver&& other) noexcept {
    if (this != &other) {
        cancel();
        registry_ = std::move(other.registry_);
        id_ = std::exchange(other.id_, 0);
    }
    return *this;
}

void NotificationObserver::cancel() {
    if (auto registry = registry_.lock()) {
        std::lock_guard lock(registry->mutex);
        registry->entries.erase(id_);
    }
    registry_.reset();
    id_ = 0;
}

NotificationCenter::NotificationCenter(MainQueue& mainQueue)
    : registry_(std::make_shared<NotificationRegistry>(mainQueue)) {}

NotificationObserver NotificationCenter::observe(std::string name, std::function<void()> callback) {
    std::lock_guard lock(registry_->mutex);
    const uint64_t id = registry_->nextID++;
    registry_->entries.emplace(
        id,
        NotificationRegistry::Entry{
            std::move(name), std::make_shared<const std::function<void()>>(std::move(callback))});
    return NotificationObserver(registry_, id);
}

void NotificationCenter::post(std::string name) {
    // The delivery holds the registry weakly: a centre destroyed before the
    // main queue gets to it delivers nothing.
    registry_->mainQueue.post([weak = std::weak_ptr(registry_), name = std::move(name)] {
        auto registry = weak.lock();
        if (!registry) {
            return;
        }
        std::vector<std::pair<uint64_t, std::shared_ptr<const std::function<void()>>>> due;
        {
            std::lock_guard lock(registry->mutex);
            for (const auto& [id, entry] : registry->entries) {
                if (entry.name == name) {
                    due.emplace_back(id, entry.callback);
                }
            }
        }
        // Callbacks run without the lock, so that they may observe, cancel and
        // post; one cancelled by an earlier callback is skipped.
        for (const auto& [id, callback] : due) {
            bool stillObserving;
            {
                std::lock_guard lock(registry->mutex);
                stillObserving = registry->entries.contains(id);
            }
            if (stillObserving && *callback) {
                (*callback)();
            }
        }
    });
}

}  // namespace tevra
