#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <thread>
#include <vector>

namespace tevra {

// The microphone of scripts/test-env: a FIFO that its PulseAudio server reads
// as 48 kHz stereo frames.
class VirtualMicrophone {
public:
    VirtualMicrophone() {
        const char* path = std::getenv("TEVRA_TEST_MICROPHONE");
        if (!path || !*path) {
            ADD_FAILURE() << "TEVRA_TEST_MICROPHONE is not set: run under scripts/test-env";
            return;
        }
        fd_ = ::open(path, O_WRONLY | O_NONBLOCK);
        if (fd_ < 0) {
            ADD_FAILURE() << "the virtual microphone " << path << " cannot be opened";
        }
    }
    ~VirtualMicrophone() {
        stopping_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }

    // Plays frames at about the pace they would be spoken, on a thread of its own.
    void speak(std::vector<int16_t> frames) {
        thread_ = std::thread([this, frames = std::move(frames)] {
            const auto* bytes = reinterpret_cast<const char*>(frames.data());
            const std::size_t total = frames.size() * sizeof(int16_t);
            constexpr std::size_t kChunk = 48000 * 2 * 2 / 50;  // 20 ms
            std::size_t sent = 0;
            while (sent < total && !stopping_) {
                pollfd writable{fd_, POLLOUT, 0};
                if (::poll(&writable, 1, 100) <= 0) {
                    continue;
                }
                const ssize_t n = ::write(fd_, bytes + sent, std::min(kChunk, total - sent));
                if (n > 0) {
                    sent += static_cast<std::size_t>(n);
                    std::this_thread::sleep_for(std::chrono::milliseconds(18));
                }
            }
            done_ = true;
        });
    }
    bool finished() const { return done_; }

private:
    int fd_ = -1;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> done_{false};
    std::thread thread_;
};

}  // namespace tevra
