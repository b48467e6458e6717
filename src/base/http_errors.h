#pragma once

#include <cstdint>
#include <string>

#include "base/error.h"
#include "base/json_decode.h"

namespace tevra {

// A service answered with a status other than 200 (0: the answer was not HTTP).
class WeftHTTPError : public Error {
public:
    explicit WeftHTTPError(int64_t status) : Error(textOf(status)), status_(status) {}
    int64_t status() const { return status_; }

private:
    static std::string textOf(int64_t status) {
        const std::string head = "HTTP " + std::to_string(status);
        if (status == 401 || status == 403) {
            return head + " — check your API key";
        }
        if (status == 429) {
            return head + " — rate limited, try again shortly";
        }
        return head;
    }

    int64_t status_;
};

class WeftEmptyResponse : public Error {
public:
    WeftEmptyResponse() : Error("empty response from the model") {}
};

}  // namespace tevra
