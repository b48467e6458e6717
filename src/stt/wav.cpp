#include "stt/wav.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tevra::WAV {
namespace {

void putU32(ByteBuffer& out, uint32_t v) {
    const char bytes[4] = {static_cast<char>(v & 0xff), static_cast<char>((v >> 8) & 0xff),
                           static_cast<char>((v >> 16) & 0xff),
                           static_cast<char>((v >> 24) & 0xff)};
    out.append(bytes, 4);
}

void putU16(ByteBuffer& out, uint16_t v) {
    const char bytes[2] = {static_cast<char>(v & 0xff), static_cast<char>((v >> 8) & 0xff)};
    out.append(bytes, 2);
}

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "WAV: %s does not fit the 32-bit header fields\n", what);
    std::abort();
}

}  // namespace

ByteBuffer data(std::span<const int16_t> samples, int64_t sampleRate) {
    const uint64_t n = samples.size();
    if (n > maxSamples) {
        fail("sample count");
    }
    if (sampleRate < 0 || sampleRate > maxSampleRate) {
        fail("sample rate");
    }
    const auto dataBytes = static_cast<uint32_t>(2 * n);
    const auto rate = static_cast<uint32_t>(sampleRate);

    ByteBuffer out;
    out.reserve(static_cast<size_t>(dataBytes) + 44);
    out.append("RIFF", 4);
    putU32(out, dataBytes + 36);
    out.append("WAVE", 4);
    out.append("fmt ", 4);
    putU32(out, 16);
    putU16(out, 1);  // PCM
    putU16(out, 1);  // mono
    putU32(out, rate);
    putU32(out, rate * 2);
    putU16(out, 2);
    putU16(out, 16);
    out.append("data", 4);
    putU32(out, dataBytes);
    static_assert(std::endian::native == std::endian::little,
                  "samples are copied as they stand in memory");
    out.append(reinterpret_cast<const char*>(samples.data()), dataBytes);
    return out;
}

bool isNearSilent(std::span<const int16_t> samples, double threshold) {
    if (samples.empty()) {
        return true;
    }
    // Integer sum: exact for any length that fits the header, and fast.
    uint64_t sum = 0;
    for (int16_t s : samples) {
        sum += static_cast<uint64_t>(s < 0 ? -static_cast<int32_t>(s) : s);
    }
    const double mean = static_cast<double>(sum) / static_cast<double>(samples.size());
    return mean < threshold;
}

}  // namespace tevra::WAV
