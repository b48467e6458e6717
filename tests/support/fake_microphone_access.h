#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "capture/microphone_access.h"

namespace tevra::testing {

// A microphone whose status the test sets; it counts the requests and the
// checks (which may come from a work thread).
class FakeMicrophoneAccess : public MicrophoneAccess {
public:
    std::atomic<Status> answer = Status::authorized;
    bool grant = true;
    int requests = 0;
    std::atomic<int> checks = 0;

    Status status() override { return answer; }
    Check check() override {
        ++checks;
        const Status now = answer;
        return {now, now == Status::authorized ? "Built-in Audio" : "",
                now == Status::authorized ? "" : "the sound server has no input device"};
    }
    void requestAccess(std::function<void(bool granted)> reply) override {
        ++requests;
        reply(grant);
    }
};

}  // namespace tevra::testing
