#include "capture/audio_level.h"

#include <algorithm>
#include <cmath>

namespace tevra {

float meterLevel(const float* interleaved, std::size_t frames, int channels) {
    float sumOfSquares = 0.0f;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const float x = interleaved[frame * static_cast<std::size_t>(channels)];
        sumOfSquares += x * x;
    }
    const float n = frames == 0 ? 1.0f : static_cast<float>(frames);
    const float rms = std::sqrt(sumOfSquares / n);
    return std::min(rms * 12.0f, 1.0f);
}

}  // namespace tevra
