#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace tevra {

// Regroups interleaved frames that arrive in pieces of any size into buffers
// of at least minFrames and at most maxFrames. A sound server may hand over a
// few milliseconds at a time; the meter wants one level per ~10 ms and the
// converter works better on whole buffers. Pieces large enough pass without a
// copy.
class FrameBatcher {
public:
    using Sink = std::function<void(const float* interleaved, std::size_t frames)>;

    FrameBatcher(std::size_t channels, std::size_t minFrames, std::size_t maxFrames, Sink sink);

    void add(const float* interleaved, std::size_t frames);
    // Hands over whatever is gathered, however little: the end of a recording.
    void flush();

private:
    void deliver(const float* interleaved, std::size_t frames);

    std::size_t channels_;
    std::size_t minFrames_;
    std::size_t maxFrames_;
    Sink sink_;
    std::vector<float> pending_;
};

}  // namespace tevra
