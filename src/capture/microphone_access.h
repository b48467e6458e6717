#pragma once

#include <functional>

namespace tevra {

// Whether Tevra may record at all, asked once at start-up. On a desktop with
// no permission system, a sound server without any input is as good as a
// refusal: the user has something to fix before the first dictation.
class MicrophoneAccess {
public:
    enum class Status { notDetermined = 0, restricted = 1, denied = 2, authorized = 3 };

    virtual ~MicrophoneAccess() = default;

    virtual Status status() = 0;
    // Asks the user, where the system can; the answer may arrive on any thread.
    virtual void requestAccess(std::function<void(bool granted)> answer) = 0;
};

}  // namespace tevra
