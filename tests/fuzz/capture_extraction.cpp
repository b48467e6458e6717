// A language model's reply to the extraction prompt, whatever it says: no
// reply makes the reader throw, every item it keeps has a title, a date and a
// time of the stored forms and a confidence from 0 to 1, and the items can be
// stored and read back unchanged.
#include "notetaker/capture_extraction.h"

#include <cstdint>
#include <string_view>

#include "base/text.h"
#include "fuzz_check.h"
#include "store/session_json.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    const std::string_view reply(reinterpret_cast<const char*>(data), size);
    const auto items =
        CaptureExtraction::keep(CaptureExtraction::consolidate(CaptureExtraction::parse(reply)));
    for (const CaptureItem& item : items) {
        FUZZ_CHECK(!item.title.empty() && text::trim(item.title) == item.title);
        FUZZ_CHECK(!item.dueISO || item.dueISO->size() == 10);
        FUZZ_CHECK(!item.dueTime || item.dueTime->size() == 5);
        FUZZ_CHECK(item.confidence >= CaptureExtraction::defaultMinConfidence &&
                   item.confidence <= 1.0);
    }
    FUZZ_CHECK(SessionJSON::decodeItems(SessionJSON::encodeItems(items)) == items);
    return 0;
}
