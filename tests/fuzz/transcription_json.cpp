// The speech services' verbose_json answer, as any server may send it: a
// transcript with its text trimmed, or a DecodingError, and nothing else.
#include <cstdint>
#include <string_view>

#include "base/json_decode.h"
#include "base/text.h"
#include "fuzz_check.h"
#include "stt/whisper_api_transcriber.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    try {
        const Transcript transcript = WhisperAPITranscriber::parseVerboseJSON(
            std::string_view(reinterpret_cast<const char*>(data), size));
        FUZZ_CHECK(text::trim(transcript.text) == transcript.text);
        FUZZ_CHECK(text::isValidUTF8(transcript.text));
    } catch (const DecodingError&) {
    }
    return 0;
}
