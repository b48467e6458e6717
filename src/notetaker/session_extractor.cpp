#include "notetaker/session_extractor.h"

#include "notetaker/capture_prompt.h"

namespace tevra {

std::vector<CaptureItem> SessionExtractor::extract(const std::string& transcript, double now,
                                                   double minConfidence) const {
    const std::string system = CapturePrompt::system(now);
    if (polishers_.empty()) {
        throw ExtractionFailed("no LLM backend available");
    }
    std::string reason;
    for (const auto& backend : polishers_) {
        std::string reply;
        try {
            reply = backend->compose(system, transcript, 0.0);
        } catch (const std::exception& e) {
            reason = describe(e);
            continue;
        }
        if (!CaptureExtraction::isStructured(reply)) {
            reason = "non-JSON reply from " + backend->name();
            continue;
        }
        using namespace CaptureExtraction;
        return keep(consolidate(parse(reply)), minConfidence);
    }
    throw ExtractionFailed(reason);
}

}  // namespace tevra
