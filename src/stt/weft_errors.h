#pragma once

#include <cstdint>
#include <string>

#include "core/error.h"
#include "core/json_body.h"

namespace tevra {

// A service answered with a status other than 200 (0: the answer was not HTTP).
class WeftHTTPError : public Error {
public:
    explicit WeftHTTPError(int64_t status) : status_(status) {}
    int64_t status() const { return status_; }

    std::string description() const override {
        const std::string head = "HTTP " + std::to_string(status_);
        if (status_ == 401 || status_ == 403) {
            return head + " — check your API key";
        }
        if (status_ == 429) {
            return head + " — rate limited, try again shortly";
        }
        return head;
    }

private:
    int64_t status_;
};

class WeftEmptyResponse : public Error {
public:
    std::string description() const override { return "empty response from the model"; }
};

}  // namespace tevra
