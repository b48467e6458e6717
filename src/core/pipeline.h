#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/error.h"
#include "core/pipeline_store.h"
#include "core/polish_context.h"
#include "core/weft_settings.h"
#include "polish/polish_backend.h"
#include "stt/transcription_router.h"

namespace tevra {

struct DictationResult {
    std::string raw;
    std::string polished;
    std::optional<std::string> language;
    int64_t sttMs = 0;
    int64_t polishMs = 0;
    std::string sttBackend;
    std::string polishBackend;
};

class PipelineError : public Error {
public:
    enum class Kind { instructFailed, nearSilent, emptyTranscript };

    static PipelineError instructFailed(std::string reason) {
        return PipelineError(Kind::instructFailed, std::move(reason));
    }
    static PipelineError nearSilent() { return PipelineError(Kind::nearSilent, {}); }
    static PipelineError emptyTranscript() { return PipelineError(Kind::emptyTranscript, {}); }

    Kind kind() const { return kind_; }
    const std::string& reason() const { return reason_; }
    std::string description() const override;

private:
    PipelineError(Kind kind, std::string reason) : kind_(kind), reason_(std::move(reason)) {}
    Kind kind_;
    std::string reason_;
};

// Turns captured audio into finished text and the figures history keeps.
// Immutable once built: a change of settings or keys builds a new Pipeline,
// and calls may overlap on any thread. Every call blocks until it is done.
class Pipeline {
public:
    Pipeline(std::shared_ptr<const TranscriptionRouter> router,
             std::vector<std::shared_ptr<const PolishBackend>> polishers,
             std::shared_ptr<PipelineStore> store, WeftSettings settings);

    DictationResult process(std::span<const int16_t> samples, int64_t sampleRate,
                            const PolishContext& context) const;
    DictationResult process(std::string_view wav, int64_t durationMs,
                            const PolishContext& context) const;

    // A running transcript while the user speaks; never fails.
    std::optional<std::string> transcribeInterim(std::span<const int16_t> samples,
                                                 int64_t sampleRate) const;

    const WeftSettings& settings() const { return settings_; }
    const std::shared_ptr<PipelineStore>& store() const { return store_; }

    // Milliseconds between two steady-clock readings, truncated.
    static int64_t millisecondsSince(std::chrono::steady_clock::time_point start);
    // Sample count * 1000 / rate in integer arithmetic, a rate below 1 read as 1.
    static int64_t sampleDurationMs(std::size_t sampleCount, int64_t sampleRate);
    // Words of a polished text: pieces between blanks; line breaks do not separate.
    static int64_t wordCount(std::string_view polished);

private:
    struct Transcribed {
        std::string text;
        RoutedTranscript routed;
        int64_t sttMs;
    };
    Transcribed transcribe(std::string_view wav) const;
    std::optional<std::string> languageHint() const;
    void record(const PolishContext& context, const DictationResult& result,
                int64_t durationMs) const;

    std::shared_ptr<const TranscriptionRouter> router_;
    std::vector<std::shared_ptr<const PolishBackend>> polishers_;
    std::shared_ptr<PipelineStore> store_;
    WeftSettings settings_;
};

}  // namespace tevra
