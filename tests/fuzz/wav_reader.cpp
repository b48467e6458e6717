// The WAV reader on any bytes, as `tevractl dictate` meets a file. Whatever it
// accepts is written again (to the speech service, or to keep a failed
// recording) and must read back as the same samples; whatever it refuses, it
// says why.
#include "stt/wav_reader.h"

#include <cstdint>
#include <string_view>

#include "fuzz_check.h"
#include "stt/wav.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    const auto decoded =
        WAV::readPCM16(std::string_view(reinterpret_cast<const char*>(data), size));
    if (const auto* refusal = std::get_if<std::string>(&decoded)) {
        FUZZ_CHECK(!refusal->empty());
        return 0;
    }
    const auto& pcm = std::get<WAV::PCM16>(decoded);
    const ByteBuffer again = WAV::data(pcm.samples, pcm.sampleRate);
    const auto reread = WAV::readPCM16(std::string_view(again));
    const auto* same = std::get_if<WAV::PCM16>(&reread);
    FUZZ_CHECK(same != nullptr);
    FUZZ_CHECK(same->samples == pcm.samples && same->sampleRate == pcm.sampleRate);
    return 0;
}
