#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace tevra {

// The format in which an input delivers its frames: 32-bit float, interleaved.
// A rate of 0 means there is no input device to record from.
struct AudioInputFormat {
    int sampleRate = 0;
    int channels = 0;
};

// One session with the system's default microphone: the platform seam under
// the recorder. An input is made for one recording and thrown away after it.
class AudioInput {
public:
    // Receives interleaved float frames, at most maxBufferFrames at a time, on
    // a thread of the input's own.
    using BufferHandler = std::function<void(const float* interleaved, std::size_t frames)>;
    static constexpr std::size_t maxBufferFrames = 4096;

    // Stops the input if it still runs.
    virtual ~AudioInput() = default;

    // The format of the default input, learnt from the system; {0, 0} when
    // there is none (no sound server, no source).
    virtual AudioInputFormat format() = 0;
    // Starts delivering buffers in format(); throws when the system refuses.
    virtual void start(BufferHandler onBuffer) = 0;
    // Stops delivering. No handler call runs after it returns. Safe to repeat.
    virtual void stop() = 0;
};

using AudioInputFactory = std::function<std::unique_ptr<AudioInput>()>;

}  // namespace tevra
