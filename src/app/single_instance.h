#pragma once

#include <optional>
#include <string>

namespace tevra {

// Keeps a second Tevra off a display that already has one: two would both
// hear the talk key and paste every dictation twice. The lock is an flock on
// a file in the user's runtime directory, named after the display, and goes
// with the process however it ends.
class SingleInstance {
public:
    // Takes the lock for the display; none when another Tevra holds it.
    static std::optional<SingleInstance> acquire(const std::string& display);
    ~SingleInstance();
    SingleInstance(SingleInstance&& other) noexcept;
    SingleInstance& operator=(SingleInstance&&) = delete;
    SingleInstance(const SingleInstance&) = delete;

private:
    explicit SingleInstance(int fd) : fd_(fd) {}
    int fd_ = -1;
};

}  // namespace tevra
