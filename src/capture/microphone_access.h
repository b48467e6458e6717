#pragma once

#include <functional>
#include <string>

namespace tevra {

// Whether Tevra may record at all, asked once at start-up. On a desktop with
// no permission system, a sound server without any input is as good as a
// refusal: the user has something to fix before the first dictation.
class MicrophoneAccess {
public:
    enum class Status { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

    virtual ~MicrophoneAccess() = default;

    // What a check found: the status, and in words for the user the input
    // that will be recorded or what is missing.
    struct Check {
        Status status = Status::notDetermined;
        std::string device;   // the input recorded from, where known
        std::string problem;  // why it cannot record, where known
    };

    virtual Status status() = 0;
    // The status with the device or the problem; blocking like status().
    virtual Check check() { return {status(), {}, {}}; }
    // Asks the user, where the system can; the answer may arrive on any thread.
    virtual void requestAccess(std::function<void(bool granted)> answer) = 0;
};

}  // namespace tevra
