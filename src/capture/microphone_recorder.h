#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/serial_queue.h"
#include "capture/audio_input.h"
#include "capture/audio_recorder.h"

namespace tevra {

// The recorder over a platform audio input. Starting and stopping the input
// happens on "tevra.audio.engine"; the samples live on "tevra.audio.buffer";
// the input's own thread measures the level and converts each buffer to
// 16 kHz mono before appending it. Callbacks hop to the main queue.
class MicrophoneRecorder final : public AudioRecorder {
public:
    using LogSink = std::function<void(const std::string& line)>;
    // Takes each converted piece of the recording as it comes, on the input's
    // thread, instead of the recorder keeping it: a recording of hours then
    // costs no memory. stop() and snapshot() give nothing back.
    using SampleSink = std::function<void(std::span<const int16_t> samples)>;

    // makeInput is called once per start, on the engine queue. The log lines
    // go to log, or to the process log when it is empty.
    MicrophoneRecorder(MainQueue& mainQueue, AudioInputFactory makeInput, LogSink log = {},
                       SampleSink sink = {});
    // Waits for a start under way and stops the input, so that no callback of
    // the input outlives the recorder.
    ~MicrophoneRecorder() override;
    MicrophoneRecorder(const MicrophoneRecorder&) = delete;
    MicrophoneRecorder& operator=(const MicrophoneRecorder&) = delete;

    void start(LevelHandler onLevel, Completion completion) override;
    Samples stop() override;
    bool isRunning() override;
    Samples snapshot() override;

private:
    void startEngine(const std::shared_ptr<const LevelHandler>& onLevel);
    void stopEngine();
    void log(const std::string& line) const;

    MainQueue& mainQueue_;
    AudioInputFactory makeInput_;
    LogSink log_;
    SampleSink sink_;
    std::atomic<bool> closing_{false};
    std::atomic<std::size_t> streamed_{0};  // samples handed to sink_ since the start

    // Owned by engineQueue_.
    std::unique_ptr<AudioInput> engine_;
    bool running_ = false;
    // Owned by bufferQueue_.
    Samples samples_;

    // Declared last: their threads finish before anything above goes away.
    SerialQueue engineQueue_{"tevra.audio.engine"};
    SerialQueue bufferQueue_{"tevra.audio.buffer"};
};

}  // namespace tevra
