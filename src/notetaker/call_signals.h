#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tevra {

// Whether somebody is talking into the microphone: a program other than Tevra
// records from the system's default input. Tevra's own recordings (a
// dictation, the notetaker's) never count, and neither does a recording of
// what the speakers play.
class MicrophoneUse {
public:
    virtual ~MicrophoneUse() = default;

    // The answer as fresh as the platform allows, without waiting on another
    // process: the main thread asks once a second.
    virtual bool isDefaultInputHot() = 0;
    // onChange is called from any thread when the answer may have changed,
    // and must only hand over to the main queue. Replaces an earlier listener.
    virtual void listen(std::function<void()> onChange) = 0;
    // No onChange call runs after this returns. Safe to repeat.
    virtual void stopListening() = 0;
};

// The applications on the desktop, by the lower-cased class of their windows
// (WM_CLASS on X11). Main thread.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // The class of the application in front; none when nothing is.
    virtual std::optional<std::string> frontmost() = 0;
    // The classes of the applications with a window, in the desktop's order.
    virtual std::vector<std::string> running() = 0;
};

}  // namespace tevra
