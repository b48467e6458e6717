#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "capture/audio_input.h"

namespace tevra::testing {

// A microphone for the recorder's logic: the test sets its format, makes its
// start fail or wait, and plays buffers into whichever input is running, as
// the input's own thread would. It counts what it was asked.
class ScriptedMicrophone : public std::enable_shared_from_this<ScriptedMicrophone> {
public:
    static std::shared_ptr<ScriptedMicrophone> make(AudioInputFormat format) {
        auto microphone = std::make_shared<ScriptedMicrophone>();
        microphone->format_ = format;
        return microphone;
    }

    // Called inside each start; throw from it to refuse the start.
    void onStart(std::function<void()> hook) {
        std::lock_guard lock(mutex_);
        startHook_ = std::move(hook);
    }

    AudioInputFactory factory() {
        return [self = shared_from_this()]() -> std::unique_ptr<AudioInput> {
            return std::make_unique<Input>(self);
        };
    }

    // Delivers frames to the running input; false when none runs.
    bool play(const std::vector<float>& interleaved) {
        std::lock_guard lock(mutex_);
        if (!running_) {
            return false;
        }
        const auto channels = static_cast<std::size_t>(format_.channels);
        running_->handler_(interleaved.data(), channels == 0 ? 0 : interleaved.size() / channels);
        return true;
    }

    // Makes the next starts wait until release(), to catch a stop in between.
    void holdStarts() {
        std::lock_guard lock(mutex_);
        holding_ = true;
    }
    void release() {
        {
            std::lock_guard lock(mutex_);
            holding_ = false;
        }
        changed_.notify_all();
    }
    bool waitUntilStartIsHeld(double seconds) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::duration<double>(seconds),
                                 [this] { return startsHeld_ > 0; });
    }

    int starts() const {
        std::lock_guard lock(mutex_);
        return starts_;
    }
    int stops() const {
        std::lock_guard lock(mutex_);
        return stops_;
    }
    bool isRunning() const {
        std::lock_guard lock(mutex_);
        return running_ != nullptr;
    }

private:
    class Input : public AudioInput {
    public:
        explicit Input(std::shared_ptr<ScriptedMicrophone> microphone)
            : microphone_(std::move(microphone)) {}
        ~Input() override { stop(); }

        AudioInputFormat format() override { return microphone_->format_; }
        void start(BufferHandler onBuffer) override {
            auto& m = *microphone_;
            std::unique_lock lock(m.mutex_);
            ++m.startsHeld_;
            m.changed_.notify_all();
            m.changed_.wait(lock, [&m] { return !m.holding_; });
            if (m.startHook_) {
                m.startHook_();
            }
            ++m.starts_;
            handler_ = std::move(onBuffer);
            m.running_ = this;
        }
        void stop() override {
            auto& m = *microphone_;
            std::lock_guard lock(m.mutex_);
            if (handler_) {
                handler_ = nullptr;
                ++m.stops_;
            }
            if (m.running_ == this) {
                m.running_ = nullptr;
            }
        }

    private:
        friend class ScriptedMicrophone;
        std::shared_ptr<ScriptedMicrophone> microphone_;
        BufferHandler handler_;
    };

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    AudioInputFormat format_;
    std::function<void()> startHook_;
    Input* running_ = nullptr;
    bool holding_ = false;
    int startsHeld_ = 0;
    int starts_ = 0;
    int stops_ = 0;
};

}  // namespace tevra::testing
