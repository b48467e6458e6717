#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tevra::testing {

// Text spoken by espeak-ng, converted by sox to interleaved s16 frames at the
// given rate and channel count (every channel the same voice). Throws naming
// the tool when espeak-ng or sox is missing.
std::vector<int16_t> spokenSamples(const std::string& text, int sampleRate, int channels);

}  // namespace tevra::testing
