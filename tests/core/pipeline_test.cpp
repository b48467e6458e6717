#include "core/pipeline.h"

#include <gtest/gtest.h>

#include "base/http_errors.h"
#include "stt/wav.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using testing::ScriptedPolisher;
using testing::ScriptedTranscriber;

// Alternating samples of one magnitude: their mean magnitude is exactly it.
std::vector<int16_t> tone(size_t count, int16_t magnitude) {
    std::vector<int16_t> samples(count);
    for (size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<int16_t>(i % 2 ? magnitude : -magnitude);
    }
    return samples;
}

// The description of what the call throws.
std::string failure(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& e) {
        return e.description();
    }
    return "(no failure)";
}

class PipelineTest : public ::testing::Test {
protected:
    Pipeline make(std::vector<std::shared_ptr<const PolishBackend>> polishers,
                  WeftSettings settings = {}, bool withStore = true) {
        return Pipeline(std::make_shared<TranscriptionRouter>(
                            std::vector<std::shared_ptr<const TranscriptionBackend>>{stt}),
                        std::move(polishers), withStore ? store : nullptr, settings);
    }

    std::shared_ptr<ScriptedTranscriber> stt =
        ScriptedTranscriber::returning("groq", "hello there general kenobi", "en");
    std::shared_ptr<testing::RecordingStore> store = std::make_shared<testing::RecordingStore>();
    const std::vector<int16_t> speech = tone(16000, 2000);
};

TEST_F(PipelineTest, NearSilenceAndEmptyTranscriptsFailAndStoreNothing) {
    const Pipeline p = make({});
    const std::string nearSilent = "no speech detected (audio near-silent)";
    EXPECT_EQ(failure([&] { p.process(std::vector<int16_t>{}, 16000, {}); }), nearSilent);
    EXPECT_EQ(failure([&] { p.process(tone(1600, 119), 16000, {}); }), nearSilent);
    EXPECT_TRUE(stt->calls().empty()) << "refused before any network work";
    // A mean magnitude of exactly 120 is speech.
    EXPECT_NO_THROW(p.process(tone(1600, 120), 16000, {}));
    EXPECT_EQ(stt->calls().size(), 1u);

    store = std::make_shared<testing::RecordingStore>();
    stt = ScriptedTranscriber::returning("groq", "");
    EXPECT_EQ(failure([&] { make({}).process(speech, 16000, {}); }),
              "transcription came back empty");
    stt = ScriptedTranscriber::failing("groq", WeftHTTPError(401));
    EXPECT_EQ(failure([&] { make({}).process(speech, 16000, {}); }),
              "all STT backends failed: groq: HTTP 401 — check your API key");
    EXPECT_TRUE(store->rows().empty());
}

TEST_F(PipelineTest, SendsTheEncodedAudioWithTheLanguageHint) {
    WeftSettings pl;
    pl.languageHint = "pl";
    make({}, pl).process(speech, 16000, {});
    make({}).process(speech, 16000, {});
    const auto calls = stt->calls();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].wav, std::string_view(WAV::data(speech, 16000)));
    EXPECT_EQ(calls[0].languageHint, "pl");
    EXPECT_EQ(calls[1].languageHint, std::nullopt) << "an empty hint is no hint";
}

TEST_F(PipelineTest, PolishersAreTriedInOrderAndTheRuleStepCatchesAFailedOrSkippedChain) {
    store->dictionaryWords = {"Kubernetes"};
    store->replacementRules = {Replacement{"kenobi", "Obi-Wan"}};
    store->snippetList = {Snippet{"sig", "Best, Ann"}};
    auto broken = ScriptedPolisher::failing("groq", WeftHTTPError(500));
    auto working = ScriptedPolisher::returning("openai", "Hello there, General Kenobi!");
    const auto result = make({broken, working}).process(speech, 16000, {});
    EXPECT_EQ(result.polished, "Hello there, General Kenobi!");
    EXPECT_EQ(result.polishBackend, "openai");
    EXPECT_EQ(result.sttBackend, "groq");
    EXPECT_EQ(result.raw, "hello there general kenobi");
    EXPECT_EQ(result.language, "en");
    EXPECT_EQ(working->lastDictionary(), store->dictionaryWords);
    EXPECT_EQ(working->lastReplacements(), store->replacementRules);
    EXPECT_EQ(working->lastSnippets(), store->snippetList);

    WeftSettings off;
    off.polishEnabled = false;
    auto unused = ScriptedPolisher::returning("groq", "never");
    const std::vector<Pipeline> ruled = {
        make({broken, ScriptedPolisher::failing("openai", WeftHTTPError(429))}),
        make({unused}, off),
        make({}),
        make({ScriptedPolisher::returning("none", "as is")}),
    };
    for (const Pipeline& p : ruled) {
        const auto r = p.process(speech, 16000, {});
        EXPECT_EQ(r.polished, "Hello there general Obi-Wan.");
        EXPECT_EQ(r.polishBackend, "rules");
    }
    EXPECT_EQ(unused->calls(), 0);
}

TEST_F(PipelineTest, WritesOneHistoryRowPerDictation) {
    PolishContext firefox;
    firefox.appName = "Firefox";
    make({ScriptedPolisher::returning("groq", "one\ntwo three")})
        .process(tone(24000, 500), 16000, firefox);
    make({ScriptedPolisher::returning("groq", "  a  b ")}).process(speech, 0, {});
    make({}).process(WAV::data(speech, 16000), 4321, {});
    make({}, {}, /*withStore=*/false).process(speech, 16000, {});

    const auto rows = store->rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].app, "Firefox");
    EXPECT_EQ(rows[0].raw, "hello there general kenobi");
    EXPECT_EQ(rows[0].polished, "one\ntwo three");
    EXPECT_EQ(rows[0].language, "en");
    EXPECT_EQ(rows[0].durationMs, 1500);
    EXPECT_EQ(rows[0].words, 2) << "a line break does not separate words";
    EXPECT_EQ(rows[0].insertMs, 0);
    EXPECT_EQ(rows[0].sttBackend, "groq");
    EXPECT_EQ(rows[0].polishBackend, "groq");
    EXPECT_GT(rows[0].ts, 1.7e9);
    EXPECT_EQ(rows[1].app, "?");
    EXPECT_EQ(rows[1].durationMs, 16000 * 1000) << "a zero rate divides by one";
    EXPECT_EQ(rows[1].words, 2);
    EXPECT_EQ(rows[2].durationMs, 4321) << "encoded audio takes its duration from the caller";
}

TEST_F(PipelineTest, InterimTranscriptsNeedMoreThanAThirdOfASecondAndNeverFail) {
    const Pipeline p = make({});
    EXPECT_EQ(p.transcribeInterim(tone(5333, 2000), 16000), std::nullopt);
    EXPECT_TRUE(stt->calls().empty());
    EXPECT_EQ(p.transcribeInterim(tone(5334, 2000), 16000), "hello there general kenobi");
    EXPECT_EQ(p.transcribeInterim(tone(8000, 50), 16000), std::nullopt);
    EXPECT_EQ(stt->calls().size(), 1u);
    EXPECT_TRUE(store->rows().empty()) << "interim results are not history";

    stt = ScriptedTranscriber::failing("groq", WeftHTTPError(500));
    EXPECT_EQ(make({}).transcribeInterim(speech, 16000), std::nullopt);
    stt = ScriptedTranscriber::returning("groq", "");
    EXPECT_EQ(make({}).transcribeInterim(speech, 16000), std::nullopt);
}

}  // namespace
}  // namespace tevra
