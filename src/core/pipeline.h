#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/byte_buffer.h"
#include "base/error.h"
#include "core/weft_settings.h"
#include "polish/mode.h"
#include "polish/polish_backend.h"
#include "polish/polish_context.h"
#include "store/pipeline_store.h"
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

private:
    PipelineError(Kind kind, std::string reason)
        : Error(textOf(kind, reason)), kind_(kind), reason_(std::move(reason)) {}
    static std::string textOf(Kind kind, const std::string& reason);
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

    // A voice applied to speech: its prompt through the polishers at the
    // composing temperature, the rule step when all fail, and the user's
    // sign-off when the voice carries one. Clean-up being switched off for
    // plain dictation does not apply here.
    DictationResult runMode(const Mode& mode, std::span<const int16_t> samples, int64_t sampleRate,
                            const PolishContext& context) const;
    // The same from encoded audio; keeps no history.
    DictationResult runModeOnWav(const Mode& mode, std::string_view wav,
                                 const PolishContext& context) const;
    // A voice applied to text that was read off the screen, not spoken.
    DictationResult runModeOnText(const Mode& mode, const std::string& text,
                                  const PolishContext& context) const;

    // The spoken words are an instruction for the first polisher that can
    // follow one; there is no rule fallback, so failing them all fails with
    // the last polisher's reason.
    DictationResult instruct(std::span<const int16_t> samples, int64_t sampleRate,
                             const PolishContext& context) const;
    DictationResult instruct(std::string_view wav, int64_t durationMs,
                             const PolishContext& context) const;

    // The text translated into the language of the code; keeps no history.
    std::string translate(const std::string& text, std::string_view to) const;

    // Speech translated into targetLang.
    DictationResult dictateToTranslate(std::span<const int16_t> samples, int64_t sampleRate,
                                       std::string_view targetLang,
                                       const PolishContext& context) const;

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
    struct Vocabulary {
        std::vector<std::string> dictionary;
        std::vector<Replacement> replacements;
        std::vector<Snippet> snippets;
    };
    struct Speech {
        ByteBuffer wav;
        int64_t durationMs;
    };
    // Refuses near-silent audio before any network work, then encodes it.
    static Speech encodeSpeech(std::span<const int16_t> samples, int64_t sampleRate);
    Transcribed transcribe(std::string_view wav) const;
    Vocabulary vocabulary() const;
    std::string compose(const Mode& mode, const std::string& transcript,
                        const PolishContext& context) const;
    std::optional<std::string> languageHint() const;
    void record(const PolishContext& context, const DictationResult& result,
                int64_t durationMs) const;

    std::shared_ptr<const TranscriptionRouter> router_;
    std::vector<std::shared_ptr<const PolishBackend>> polishers_;
    std::shared_ptr<PipelineStore> store_;
    WeftSettings settings_;
};

}  // namespace tevra
