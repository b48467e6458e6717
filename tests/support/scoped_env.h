#pragma once

#include <stdlib.h>

#include <map>
#include <optional>
#include <string>

namespace tevra::testing {

// Sets (a value) or unsets (nullopt) environment variables of this process and
// puts back what was there when it goes, so that no test leaks its
// environment into the next one.
class ScopedEnv {
public:
    explicit ScopedEnv(const std::map<std::string, std::optional<std::string>>& values = {}) {
        for (const auto& [name, value] : values) {
            set(name, value);
        }
    }
    ~ScopedEnv() {
        for (const auto& [name, value] : saved_) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

    void set(const std::string& name, const std::optional<std::string>& value) {
        if (!saved_.contains(name)) {
            const char* old = ::getenv(name.c_str());
            saved_[name] = old ? std::optional<std::string>(old) : std::nullopt;
        }
        value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }

private:
    std::map<std::string, std::optional<std::string>> saved_;
};

}  // namespace tevra::testing
