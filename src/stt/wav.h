#pragma once

#include <cstdint>
#include <span>

#include "base/byte_buffer.h"

namespace tevra::WAV {

// A mono 16-bit little-endian PCM WAV image: the 44-byte header, then the samples.
ByteBuffer data(std::span<const int16_t> samples, int64_t sampleRate);

// True when the mean magnitude of the samples is strictly below threshold; an
// empty array is silent. A short click in long silence stays near-silent.
bool isNearSilent(std::span<const int16_t> samples, double threshold = 120.0);

}  // namespace tevra::WAV
