#include "stt/transcription_router.h"

namespace tevra {

std::string RouterError::textOf(Kind kind, const std::vector<Failure>& failures) {
    if (kind == Kind::noBackends) {
        return "no transcription backends configured";
    }
    std::string text = "all STT backends failed: ";
    for (size_t i = 0; i < failures.size(); ++i) {
        if (i > 0) {
            text += " | ";
        }
        text += failures[i].first + ": " + failures[i].second;
    }
    return text;
}

RoutedTranscript TranscriptionRouter::route(std::string_view wav,
                                            const std::optional<std::string>& languageHint) const {
    if (backends_.empty()) {
        throw RouterError::noBackends();
    }
    std::vector<RouterError::Failure> failures;
    for (const auto& backend : backends_) {
        try {
            return RoutedTranscript{backend->transcribe(wav, languageHint), backend->name()};
        } catch (const std::exception& e) {
            failures.emplace_back(backend->name(), describe(e));
        }
    }
    throw RouterError::allFailed(std::move(failures));
}

}  // namespace tevra
