#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace tevra {

// Callbacks to run when a model changes. Each lives as long as the token
// add() returned, so a view that goes away stops being called without
// saying so.
class Observers {
public:
    using Token = std::shared_ptr<void>;

    [[nodiscard]] Token add(std::function<void()> callback) {
        auto held = std::make_shared<std::function<void()>>(std::move(callback));
        list_.push_back(held);
        return held;
    }

    // Runs every live callback; one may add or drop observers while it runs.
    void notify() {
        const auto snapshot = list_;
        for (const auto& weak : snapshot) {
            if (auto callback = weak.lock()) {
                (*callback)();
            }
        }
        std::erase_if(list_, [](const auto& weak) { return weak.expired(); });
    }

private:
    std::vector<std::weak_ptr<std::function<void()>>> list_;
};

}  // namespace tevra
