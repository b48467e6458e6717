#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "core/secret_store.h"

namespace tevra::testing {

// A secure store in memory that records every call ("lookup GROQ_API_KEY",
// "store ...", "erase ..."). Unavailable, it behaves like a missing Secret
// Service: nothing reads, nothing writes.
class MemorySecretStore : public SecretStore {
public:
    std::optional<std::string> lookup(std::string_view account) override {
        std::lock_guard lock(mutex_);
        calls_.push_back("lookup " + std::string(account));
        const auto it = items_.find(account);
        if (!available_ || it == items_.end()) {
            return std::nullopt;
        }
        return it->second;
    }
    bool store(std::string_view account, std::string_view data) override {
        std::lock_guard lock(mutex_);
        calls_.push_back("store " + std::string(account));
        if (!available_) {
            return false;
        }
        items_[std::string(account)] = std::string(data);
        return true;
    }
    bool erase(std::string_view account) override {
        std::lock_guard lock(mutex_);
        calls_.push_back("erase " + std::string(account));
        if (!available_) {
            return false;
        }
        if (const auto it = items_.find(account); it != items_.end()) {
            items_.erase(it);
        }
        return true;
    }

    // Puts raw bytes in place without recording a call.
    void seed(std::string account, std::string data) {
        std::lock_guard lock(mutex_);
        items_[std::move(account)] = std::move(data);
    }
    void setAvailable(bool available) {
        std::lock_guard lock(mutex_);
        available_ = available;
    }
    std::vector<std::string> calls() const {
        std::lock_guard lock(mutex_);
        return calls_;
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::string, std::less<>> items_;
    std::vector<std::string> calls_;
    bool available_ = true;
};

}  // namespace tevra::testing
