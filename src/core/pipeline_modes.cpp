// The paths beyond plain dictation: a voice applied to speech or to text, a
// spoken instruction, and translation.

#include <chrono>

#include "base/text.h"
#include "core/pipeline.h"
#include "polish/prompt_builder.h"
#include "polish/rules_polisher.h"
#include "polish/signature.h"

namespace tevra {

namespace {

constexpr double kTranslateTemperature = 0.2;
constexpr const char* kNoLLMBackend = "no LLM backend available";

std::string modeLabel(const Mode& mode) {
    return "mode:" + mode.name;
}

}  // namespace

std::string Pipeline::compose(const Mode& mode, const std::string& transcript,
                              const PolishContext& context) const {
    const Vocabulary vocab = vocabulary();
    std::optional<std::string> text;
    if (!polishers_.empty()) {
        const std::string persona = Signature::persona(settings_.identity());
        const std::string system = PromptBuilder::system(mode, vocab.dictionary, vocab.replacements,
                                                         vocab.snippets, persona);
        const std::string user = PromptBuilder::user(transcript, context);
        for (const auto& polisher : polishers_) {
            try {
                text = polisher->compose(system, user);
                break;
            } catch (const std::exception&) {
                // the next polisher is the second chance; the rule step the last
            }
        }
    }
    if (!text) {
        text = RulesPolisher::apply(transcript, vocab.replacements);
    }

    // The voice's signature is a switch; what is printed is the user's own sign-off.
    if (!mode.signature.empty()) {
        const std::string signOff = Signature::build(settings_.identity());
        if (!signOff.empty()) {
            *text += "\n\n" + signOff;
        }
    }
    return std::move(*text);
}

DictationResult Pipeline::runMode(const Mode& mode, std::span<const int16_t> samples,
                                  int64_t sampleRate, const PolishContext& context) const {
    const Speech speech = encodeSpeech(samples, sampleRate);
    DictationResult result = runModeOnWav(mode, speech.wav, context);
    record(context, result, speech.durationMs);
    return result;
}

DictationResult Pipeline::runModeOnWav(const Mode& mode, std::string_view wav,
                                       const PolishContext& context) const {
    Transcribed t = transcribe(wav);
    const auto polishStart = std::chrono::steady_clock::now();
    std::string polished = compose(mode, t.text, context);
    return DictationResult{
        .raw = std::move(t.text),
        .polished = std::move(polished),
        .language = t.routed.transcript.language,
        .sttMs = t.sttMs,
        .polishMs = millisecondsSince(polishStart),
        .sttBackend = t.routed.backend,
        .polishBackend = modeLabel(mode),
    };
}

DictationResult Pipeline::runModeOnText(const Mode& mode, const std::string& text,
                                        const PolishContext& context) const {
    const auto polishStart = std::chrono::steady_clock::now();
    std::string polished = compose(mode, text, context);
    DictationResult result{
        .raw = text,
        .polished = std::move(polished),
        .language = mode.outputLanguage,
        .sttMs = 0,
        .polishMs = millisecondsSince(polishStart),
        // Every text handed in counts as read off the screen.
        .sttBackend = "ocr",
        .polishBackend = modeLabel(mode),
    };
    record(context, result, 0);
    return result;
}

DictationResult Pipeline::instruct(std::span<const int16_t> samples, int64_t sampleRate,
                                   const PolishContext& context) const {
    const Speech speech = encodeSpeech(samples, sampleRate);
    return instruct(speech.wav, speech.durationMs, context);
}

DictationResult Pipeline::instruct(std::string_view wav, int64_t durationMs,
                                   const PolishContext& context) const {
    Transcribed t = transcribe(wav);
    const std::vector<std::string> dictionary =
        store_ ? store_->dictionary() : std::vector<std::string>{};

    const auto polishStart = std::chrono::steady_clock::now();
    std::string reason = kNoLLMBackend;
    for (const auto& polisher : polishers_) {
        std::string answer;
        try {
            answer = polisher->instruct(t.text, context, dictionary);
        } catch (const std::exception& e) {
            reason = describe(e);
            continue;
        }
        DictationResult result{
            .raw = std::move(t.text),
            .polished = std::move(answer),
            .language = t.routed.transcript.language,
            .sttMs = t.sttMs,
            .polishMs = millisecondsSince(polishStart),
            .sttBackend = t.routed.backend,
            .polishBackend = "instruct:" + polisher->name(),
        };
        record(context, result, durationMs);
        return result;
    }
    throw PipelineError::instructFailed(std::move(reason));
}

std::string Pipeline::translate(const std::string& text, std::string_view to) const {
    if (text::trim(text).empty()) {
        throw PipelineError::emptyTranscript();
    }
    const std::string system = PromptBuilder::translateSystem(to);
    std::string reason = kNoLLMBackend;
    for (const auto& polisher : polishers_) {
        try {
            // The text goes as it was given; only the emptiness test trims it.
            return polisher->compose(system, text, kTranslateTemperature);
        } catch (const std::exception& e) {
            reason = describe(e);
        }
    }
    throw PipelineError::instructFailed(std::move(reason));
}

DictationResult Pipeline::dictateToTranslate(std::span<const int16_t> samples, int64_t sampleRate,
                                             std::string_view targetLang,
                                             const PolishContext& context) const {
    const Speech speech = encodeSpeech(samples, sampleRate);
    Transcribed t = transcribe(speech.wav);
    const auto polishStart = std::chrono::steady_clock::now();
    std::string translated = translate(t.text, targetLang);
    DictationResult result{
        .raw = std::move(t.text),
        .polished = std::move(translated),
        .language = t.routed.transcript.language,
        .sttMs = t.sttMs,
        .polishMs = millisecondsSince(polishStart),
        .sttBackend = t.routed.backend,
        .polishBackend = "translate:" + std::string(targetLang),
    };
    record(context, result, speech.durationMs);
    return result;
}

}  // namespace tevra
