#include "stt/wav_reader.h"

#include <algorithm>

#include "stt/wav.h"

namespace tevra::WAV {
namespace {

uint32_t u32(std::string_view b, size_t at) {
    return static_cast<uint32_t>(static_cast<uint8_t>(b[at])) |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 1])) << 8 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 2])) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(b[at + 3])) << 24;
}

uint16_t u16(std::string_view b, size_t at) {
    return static_cast<uint16_t>(static_cast<uint8_t>(b[at]) | static_cast<uint8_t>(b[at + 1])
                                                                   << 8);
}

constexpr uint16_t kFormatPCM = 1;
constexpr uint16_t kFormatExtensible = 0xFFFE;

}  // namespace

std::variant<PCM16, std::string> readPCM16(std::string_view bytes) {
    if (bytes.size() < 12 || bytes.substr(0, 4) != "RIFF" || bytes.substr(8, 4) != "WAVE") {
        return std::string("not a WAV file (no RIFF/WAVE header)");
    }
    PCM16 pcm;
    int bitsPerSample = 0;
    bool haveFormat = false;
    size_t at = 12;
    while (at + 8 <= bytes.size()) {
        const std::string_view id = bytes.substr(at, 4);
        const size_t size = u32(bytes, at + 4);
        const size_t body = at + 8;
        const size_t available = bytes.size() - body;
        if (id == "fmt ") {
            if (size < 16 || available < 16) {
                return std::string("the WAV format chunk is too short");
            }
            uint16_t format = u16(bytes, body);
            pcm.channels = u16(bytes, body + 2);
            pcm.sampleRate = u32(bytes, body + 4);
            bitsPerSample = u16(bytes, body + 14);
            if (format == kFormatExtensible && size >= 40 && available >= 40) {
                format = u16(bytes, body + 24);  // the sub-format's first two bytes
            }
            if (format != kFormatPCM) {
                return std::string("the WAV file is not PCM (format ") + std::to_string(format) +
                       ")";
            }
            haveFormat = true;
        } else if (id == "data") {
            if (!haveFormat) {
                return std::string("the WAV file has its data before its format");
            }
            if (bitsPerSample != 16) {
                return "the WAV file has " + std::to_string(bitsPerSample) +
                       "-bit samples; 16-bit PCM is needed";
            }
            if (pcm.channels < 1 || pcm.sampleRate < 1) {
                return std::string("the WAV file has no channels or no sample rate");
            }
            // What is read is written again (to the speech service, or to keep
            // a failed recording), so it must fit the header of the encoder.
            if (pcm.sampleRate > maxSampleRate) {
                return "the WAV file's sample rate of " + std::to_string(pcm.sampleRate) +
                       " Hz is too high";
            }
            // A recorder that was cut off may leave a size larger than the file.
            const size_t dataBytes = std::min(size, available);
            const size_t frameBytes = 2 * static_cast<size_t>(pcm.channels);
            const size_t frames = dataBytes / frameBytes;
            if (frames > maxSamples) {
                return std::string("the WAV file is too long");
            }
            pcm.samples.resize(frames);
            for (size_t i = 0; i < frames; ++i) {
                pcm.samples[i] = static_cast<int16_t>(u16(bytes, body + i * frameBytes));
            }
            return pcm;
        }
        at = body + size + (size & 1);  // chunks are padded to even sizes
    }
    return std::string(haveFormat ? "the WAV file has no data chunk"
                                  : "the WAV file has no format chunk");
}

}  // namespace tevra::WAV
