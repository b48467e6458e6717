#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/error.h"
#include "notetaker/capture_extraction.h"
#include "polish/polish_backend.h"
#include "store/session_records.h"

namespace tevra {

// No backend gave a structured reply; reason is the last backend's failure.
class ExtractionFailed : public Error {
public:
    explicit ExtractionFailed(std::string why)
        : Error("extraction failed: " + why), reason(std::move(why)) {}
    std::string reason;
};

// Asks the language models, in chain order, for what a transcript holds worth
// keeping. The first structured reply decides, even when it holds nothing;
// a backend that fails or answers in prose hands over to the next.
class SessionExtractor {
public:
    explicit SessionExtractor(std::vector<std::shared_ptr<const PolishBackend>> polishers)
        : polishers_(std::move(polishers)) {}

    // transcript: the flat text ("Me: ...", "Them: ..."); now: seconds since
    // the Unix epoch, the day relative dates are resolved against. Blocks for
    // the backends' answers; throws ExtractionFailed.
    std::vector<CaptureItem> extract(
        const std::string& transcript, double now,
        double minConfidence = CaptureExtraction::defaultMinConfidence) const;

private:
    std::vector<std::shared_ptr<const PolishBackend>> polishers_;
};

}  // namespace tevra
