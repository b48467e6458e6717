#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <vector>

#include "base/byte_buffer.h"

namespace tevra {

// Records the microphone for one dictation at a time and hands the whole
// recording back as signed 16-bit mono samples at sampleRate.
class AudioRecorder {
public:
    // The rate of every recording; the pipeline and the chunkers take it from here.
    static constexpr int sampleRate = 16000;
    // A recording: up to 180 s, about 6 MB, held in huge pages so that the
    // copy handed out at stop costs a millisecond, not tens of page faults' worth.
    using Samples = std::vector<int16_t, LargeBufferAllocator<int16_t>>;

    // A level from 0 to 1 per input buffer, for the meters.
    using LevelHandler = std::function<void(float level)>;
    // Null on success; otherwise the reason the microphone did not start.
    using Completion = std::function<void(std::exception_ptr error)>;

    virtual ~AudioRecorder() = default;

    // Returns at once, with the previous recording already emptied. Both
    // callbacks arrive on the main queue.
    virtual void start(LevelHandler onLevel, Completion completion) = 0;
    // Stops the microphone, waiting for a start still under way, and returns
    // the recording. Safe at any time; with nothing running it returns the
    // last recording again.
    virtual Samples stop() = 0;
    virtual bool isRunning() = 0;
    // The recording so far, without stopping.
    virtual Samples snapshot() = 0;
};

}  // namespace tevra
