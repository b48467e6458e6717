#pragma once

#include <cstddef>

namespace tevra {

// The meter level of one buffer of interleaved float frames: the RMS of the
// first channel times 12, at most 1. Speech at a normal distance reads around
// the middle of the scale; an empty buffer reads 0.
float meterLevel(const float* interleaved, std::size_t frames, int channels);

}  // namespace tevra
