// A session as the store keeps it, read back from a database that another
// version of Tevra, a hand edit or a damaged disk may have left: each form
// decodes or fails with a DecodingError, and whatever decodes is written
// again as a text that decodes to the same records.
#include "store/session_json.h"

#include <cstdint>
#include <string_view>

#include "base/json_decode.h"
#include "fuzz_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const NoteSession session = SessionJSON::decodeSession(text);
        FUZZ_CHECK(SessionJSON::decodeSession(SessionJSON::encodeSession(session)) == session);
    } catch (const DecodingError&) {
    }
    try {
        const auto lines = SessionJSON::decodeTranscript(text);
        FUZZ_CHECK(SessionJSON::decodeTranscript(SessionJSON::encodeTranscript(lines)) == lines);
    } catch (const DecodingError&) {
    }
    try {
        const auto items = SessionJSON::decodeItems(text);
        FUZZ_CHECK(SessionJSON::decodeItems(SessionJSON::encodeItems(items)) == items);
    } catch (const DecodingError&) {
    }
    return 0;
}
