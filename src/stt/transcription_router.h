#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/error.h"
#include "stt/transcription_backend.h"

namespace tevra {

class RouterError : public Error {
public:
    enum class Kind { allFailed, noBackends };
    using Failure = std::pair<std::string, std::string>;  // backend, error text

    static RouterError allFailed(std::vector<Failure> failures) {
        return RouterError(Kind::allFailed, std::move(failures));
    }
    static RouterError noBackends() { return RouterError(Kind::noBackends, {}); }

    Kind kind() const { return kind_; }
    const std::vector<Failure>& failures() const { return failures_; }

private:
    RouterError(Kind kind, std::vector<Failure> failures)
        : Error(textOf(kind, failures)), kind_(kind), failures_(std::move(failures)) {}
    static std::string textOf(Kind kind, const std::vector<Failure>& failures);
    Kind kind_;
    std::vector<Failure> failures_;
};

// Tries the backends strictly in order; the first that answers wins, even with
// an empty text. No retry, no back-off, no memory between calls.
class TranscriptionRouter {
public:
    explicit TranscriptionRouter(std::vector<std::shared_ptr<const TranscriptionBackend>> backends)
        : backends_(std::move(backends)) {}

    RoutedTranscript route(std::string_view wav,
                           const std::optional<std::string>& languageHint) const;

    const std::vector<std::shared_ptr<const TranscriptionBackend>>& backends() const {
        return backends_;
    }

private:
    std::vector<std::shared_ptr<const TranscriptionBackend>> backends_;
};

}  // namespace tevra
