#pragma once

#include <cstdint>
#include <span>

#include "base/byte_buffer.h"

namespace tevra::WAV {

// The largest image the 32-bit fields of the header can describe: its byte
// rate (two bytes a sample) and its RIFF size (the data plus 36) must fit.
inline constexpr int64_t maxSampleRate = 0xFFFFFFFFLL / 2;
inline constexpr uint64_t maxSamples = (0xFFFFFFFFULL - 36) / 2;

// A mono 16-bit little-endian PCM WAV image: the 44-byte header, then the
// samples. A rate or a length beyond the limits above aborts: callers check.
ByteBuffer data(std::span<const int16_t> samples, int64_t sampleRate);

// True when the mean magnitude of the samples is strictly below threshold; an
// empty array is silent. A short click in long silence stays near-silent.
bool isNearSilent(std::span<const int16_t> samples, double threshold = 120.0);

}  // namespace tevra::WAV
