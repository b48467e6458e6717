#include "notetaker/audio_chunker.h"

#include <algorithm>

namespace tevra::AudioChunker {

std::vector<Chunk> chunks(std::span<const int16_t> samples, int64_t sampleRate, double startOffset,
                          double windowSeconds) {
    std::vector<Chunk> result;
    if (sampleRate < 1 || samples.empty()) {
        return result;
    }
    const double exact = windowSeconds * static_cast<double>(sampleRate);
    // Below two samples (a window of 0 s, say) counts as one: never an endless loop.
    const size_t window =
        exact >= 2 ? static_cast<size_t>(std::min(exact, static_cast<double>(samples.size()))) : 1;
    result.reserve(samples.size() / window + 1);
    for (size_t start = 0; start < samples.size(); start += window) {
        const size_t length = std::min(window, samples.size() - start);
        result.push_back(
            {static_cast<double>(start) / static_cast<double>(sampleRate) + startOffset,
             samples.subspan(start, length)});
    }
    return result;
}

}  // namespace tevra::AudioChunker
