#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tevra {

struct Transcript {
    std::string text;  // trimmed by the backend
    std::optional<std::string> language;
    std::optional<double> durationSec;
};

struct RoutedTranscript {
    Transcript transcript;
    std::string backend;
};

// A speech-to-text service. Implementations are immutable and may be called
// from several threads at once; transcribe blocks until the service answers.
class TranscriptionBackend {
public:
    virtual ~TranscriptionBackend() = default;
    virtual std::string name() const = 0;
    virtual Transcript transcribe(std::string_view wav,
                                  const std::optional<std::string>& languageHint) const = 0;
};

}  // namespace tevra
