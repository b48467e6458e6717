#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tevra::WAV {

struct PCM16 {
    std::vector<int16_t> samples;  // the first channel only
    int64_t sampleRate = 0;
    int channels = 0;
};

// Reads a RIFF/WAVE image of 16-bit PCM at any rate and channel count, keeping
// the first channel, at a rate and length that WAV::data can write again.
// Anything else gives a sentence saying what is wrong.
std::variant<PCM16, std::string> readPCM16(std::string_view bytes);

}  // namespace tevra::WAV
