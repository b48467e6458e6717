#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Cuts a finished stream into windows for transcription. The windows do not
// overlap and the last one is as short as what is left; a word on a boundary
// is cut, which is accepted.
namespace tevra::AudioChunker {

inline constexpr double defaultWindowSeconds = 25.0;

// A window of the stream: its start in seconds and its samples, a view into
// the stream (an hour of two streams is not copied once more).
struct Chunk {
    double startTs = 0;
    std::span<const int16_t> samples;
};

// Windows of windowSeconds (at least one sample each) from startOffset on;
// none for an empty stream or a sample rate below 1.
std::vector<Chunk> chunks(std::span<const int16_t> samples, int64_t sampleRate,
                          double startOffset = 0, double windowSeconds = defaultWindowSeconds);

}  // namespace tevra::AudioChunker
