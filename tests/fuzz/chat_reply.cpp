// The reply of a chat/completions service, as any server may send it: the
// cleaned text of the first choice, or a DecodingError, and nothing else.
#include <cstdint>
#include <string_view>

#include "base/json_decode.h"
#include "base/text.h"
#include "fuzz_check.h"
#include "polish/llm_polisher.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    try {
        const std::string reply =
            LLMPolisher::parseChatJSON(std::string_view(reinterpret_cast<const char*>(data), size));
        // JSON text is UTF-8, and what the reader cuts off (fence, quotes,
        // blanks) leaves it so.
        FUZZ_CHECK(text::isValidUTF8(reply));
    } catch (const DecodingError&) {
    }
    return 0;
}
