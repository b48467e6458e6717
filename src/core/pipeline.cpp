#include "core/pipeline.h"

#include <algorithm>
#include <chrono>

#include "base/text.h"
#include "polish/rules_polisher.h"
#include "stt/wav.h"

namespace tevra {

std::string PipelineError::textOf(Kind kind, const std::string& reason) {
    switch (kind) {
        case Kind::instructFailed:
            return "command failed: " + reason;
        case Kind::nearSilent:
            return "no speech detected (audio near-silent)";
        case Kind::emptyTranscript:
            return "transcription came back empty";
    }
    return {};
}

Pipeline::Pipeline(std::shared_ptr<const TranscriptionRouter> router,
                   std::vector<std::shared_ptr<const PolishBackend>> polishers,
                   std::shared_ptr<PipelineStore> store, WeftSettings settings)
    : router_(std::move(router)),
      polishers_(std::move(polishers)),
      store_(std::move(store)),
      settings_(std::move(settings)) {}

int64_t Pipeline::millisecondsSince(std::chrono::steady_clock::time_point start) {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return static_cast<int64_t>(elapsed.count() * 1000.0);
}

int64_t Pipeline::sampleDurationMs(std::size_t sampleCount, int64_t sampleRate) {
    return static_cast<int64_t>(sampleCount) * 1000 / std::max<int64_t>(sampleRate, 1);
}

int64_t Pipeline::wordCount(std::string_view polished) {
    return static_cast<int64_t>(text::countSpaceSeparated(polished));
}

std::optional<std::string> Pipeline::languageHint() const {
    if (settings_.languageHint.empty()) {
        return std::nullopt;
    }
    return settings_.languageHint;
}

Pipeline::Speech Pipeline::encodeSpeech(std::span<const int16_t> samples, int64_t sampleRate) {
    if (WAV::isNearSilent(samples)) {
        throw PipelineError::nearSilent();
    }
    return Speech{WAV::data(samples, sampleRate), sampleDurationMs(samples.size(), sampleRate)};
}

Pipeline::Vocabulary Pipeline::vocabulary() const {
    if (!store_) {
        return {};
    }
    return Vocabulary{store_->dictionary(), store_->replacements(), store_->snippets()};
}

Pipeline::Transcribed Pipeline::transcribe(std::string_view wav) const {
    const auto start = std::chrono::steady_clock::now();
    RoutedTranscript routed = router_->route(wav, languageHint());
    const int64_t sttMs = millisecondsSince(start);
    if (routed.transcript.text.empty()) {
        throw PipelineError::emptyTranscript();
    }
    std::string text = routed.transcript.text;
    return Transcribed{std::move(text), std::move(routed), sttMs};
}

DictationResult Pipeline::process(std::span<const int16_t> samples, int64_t sampleRate,
                                  const PolishContext& context) const {
    const Speech speech = encodeSpeech(samples, sampleRate);
    return process(speech.wav, speech.durationMs, context);
}

DictationResult Pipeline::process(std::string_view wav, int64_t durationMs,
                                  const PolishContext& context) const {
    Transcribed t = transcribe(wav);

    const Vocabulary vocab = vocabulary();

    const auto polishStart = std::chrono::steady_clock::now();
    std::optional<std::string> polished;
    std::string label;
    if (settings_.polishEnabled) {
        for (const auto& polisher : polishers_) {
            try {
                polished = polisher->polish(t.text, context, vocab.dictionary, vocab.replacements,
                                            vocab.snippets);
                label = polisher->name();
                break;
            } catch (const std::exception&) {
                // the next polisher is the second chance; the rule step the last
            }
        }
    }
    if (!polished || label == "none") {
        polished = RulesPolisher::apply(t.text, vocab.replacements);
        label = "rules";
    }

    DictationResult result{
        .raw = t.text,
        .polished = std::move(*polished),
        .language = t.routed.transcript.language,
        .sttMs = t.sttMs,
        .polishMs = millisecondsSince(polishStart),
        .sttBackend = t.routed.backend,
        .polishBackend = std::move(label),
    };
    record(context, result, durationMs);
    return result;
}

void Pipeline::record(const PolishContext& context, const DictationResult& result,
                      int64_t durationMs) const {
    if (!store_) {
        return;
    }
    HistoryRow row;
    row.app = context.appName.value_or("?");
    row.raw = result.raw;
    row.polished = result.polished;
    row.language = result.language;
    row.durationMs = durationMs;
    row.sttMs = result.sttMs;
    row.polishMs = result.polishMs;
    row.insertMs = 0;
    row.words = wordCount(result.polished);
    row.sttBackend = result.sttBackend;
    row.polishBackend = result.polishBackend;
    store_->add(row);
}

std::optional<std::string> Pipeline::transcribeInterim(std::span<const int16_t> samples,
                                                       int64_t sampleRate) const {
    if (static_cast<int64_t>(samples.size()) <= sampleRate / 3) {
        return std::nullopt;
    }
    if (WAV::isNearSilent(samples)) {
        return std::nullopt;
    }
    try {
        const ByteBuffer wav = WAV::data(samples, sampleRate);
        auto routed = router_->route(wav, languageHint());
        if (routed.transcript.text.empty()) {
            return std::nullopt;
        }
        return routed.transcript.text;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace tevra
