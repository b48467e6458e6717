#include "core/pipeline.h"

#include <gtest/gtest.h>

#include "polish/llm_polisher.h"
#include "stt/wav.h"
#include "stt/weft_errors.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using testing::RecordingStore;
using testing::ScriptedPolisher;
using testing::ScriptedTranscriber;

std::vector<int16_t> tone(size_t count, int16_t magnitude) {
    std::vector<int16_t> samples(count);
    for (size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<int16_t>(i % 2 ? magnitude : -magnitude);
    }
    return samples;
}

std::shared_ptr<ScriptedPolisher> polisherReturning(std::string name, std::string text) {
    return std::make_shared<ScriptedPolisher>(std::move(name),
                                              [text](const std::string&) { return text; });
}

std::shared_ptr<ScriptedPolisher> polisherFailing(std::string name) {
    return std::make_shared<ScriptedPolisher>(
        std::move(name), [](const std::string&) -> std::string { throw WeftHTTPError(500); });
}

class PipelineTest : public ::testing::Test {
protected:
    Pipeline make(std::vector<std::shared_ptr<const PolishBackend>> polishers,
                  WeftSettings settings = {}, bool withStore = true) {
        return Pipeline(std::make_shared<TranscriptionRouter>(
                            std::vector<std::shared_ptr<const TranscriptionBackend>>{stt}),
                        std::move(polishers), withStore ? store : nullptr, settings);
    }
    static PipelineError::Kind failureKind(const std::function<void()>& call) {
        try {
            call();
        } catch (const PipelineError& e) {
            return e.kind();
        }
        throw std::logic_error("expected a PipelineError");
    }

    std::shared_ptr<ScriptedTranscriber> stt =
        ScriptedTranscriber::returning("groq", "hello there general kenobi", "en");
    std::shared_ptr<RecordingStore> store = std::make_shared<RecordingStore>();
    const std::vector<int16_t> speech = tone(16000, 2000);
};

TEST_F(PipelineTest, NearSilenceIsRefusedBeforeAnyNetworkWork) {
    const Pipeline p = make({});
    EXPECT_EQ(failureKind([&] { p.process(std::vector<int16_t>{}, 16000, {}); }),
              PipelineError::Kind::nearSilent);
    EXPECT_EQ(failureKind([&] { p.process(tone(1600, 119), 16000, {}); }),
              PipelineError::Kind::nearSilent);
    EXPECT_TRUE(stt->calls().empty());
    EXPECT_TRUE(store->rows().empty());

    // A mean magnitude of exactly 120 is speech.
    EXPECT_NO_THROW(p.process(tone(1600, 120), 16000, {}));
    EXPECT_EQ(stt->calls().size(), 1u);
    EXPECT_EQ(PipelineError::nearSilent().description(), "no speech detected (audio near-silent)");
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

TEST_F(PipelineTest, EmptyTranscriptAndRouterFailuresStoreNothing) {
    stt = ScriptedTranscriber::returning("groq", "");
    EXPECT_EQ(failureKind([&] { make({}).process(speech, 16000, {}); }),
              PipelineError::Kind::emptyTranscript);
    EXPECT_EQ(PipelineError::emptyTranscript().description(), "transcription came back empty");

    stt = ScriptedTranscriber::failing("groq", WeftHTTPError(401));
    try {
        make({}).process(speech, 16000, {});
        FAIL();
    } catch (const RouterError& e) {
        EXPECT_EQ(e.description(), "all STT backends failed: groq: HTTP 401 — check your API key");
    }
    EXPECT_TRUE(store->rows().empty());
}

TEST_F(PipelineTest, PolishersAreTriedInOrderWithTheStoreVocabulary) {
    store->dictionaryWords = {"Kubernetes"};
    store->replacementRules = {Replacement{"kenobi", "Kenobi"}};
    store->snippetList = {Snippet{"sig", "Best, Ann"}};
    auto broken = polisherFailing("groq");
    auto working = polisherReturning("openai", "Hello there, General Kenobi!");
    const auto result = make({broken, working}).process(speech, 16000, {});
    EXPECT_EQ(result.polished, "Hello there, General Kenobi!");
    EXPECT_EQ(result.polishBackend, "openai");
    EXPECT_EQ(result.sttBackend, "groq");
    EXPECT_EQ(result.raw, "hello there general kenobi");
    EXPECT_EQ(result.language, "en");
    EXPECT_EQ(working->lastDictionary(), store->dictionaryWords);
    EXPECT_EQ(working->lastReplacements(), store->replacementRules);
    EXPECT_EQ(working->lastSnippets(), store->snippetList);
}

TEST_F(PipelineTest, TheRuleStepCatchesEveryFailedOrSkippedChain) {
    store->replacementRules = {Replacement{"kenobi", "Obi-Wan"}};
    const std::string rules = "Hello there general Obi-Wan.";

    const auto allFailed =
        make({polisherFailing("groq"), polisherFailing("openai")}).process(speech, 16000, {});
    EXPECT_EQ(allFailed.polished, rules);
    EXPECT_EQ(allFailed.polishBackend, "rules");

    auto unused = polisherReturning("groq", "never");
    WeftSettings off;
    off.polishEnabled = false;
    const auto disabled = make({unused}, off).process(speech, 16000, {});
    EXPECT_EQ(disabled.polished, rules);
    EXPECT_EQ(disabled.polishBackend, "rules");
    EXPECT_EQ(unused->calls(), 0);

    EXPECT_EQ(make({}).process(speech, 16000, {}).polishBackend, "rules");
    const auto none = make({polisherReturning("none", "as is")}).process(speech, 16000, {});
    EXPECT_EQ(none.polished, rules);
    EXPECT_EQ(none.polishBackend, "rules");
}

TEST_F(PipelineTest, WritesOneHistoryRowPerDictation) {
    PolishContext context;
    context.appName = "Firefox";
    make({polisherReturning("groq", "one\ntwo three")}).process(tone(24000, 500), 16000, context);
    make({polisherReturning("groq", "  a  b ")}).process(speech, 0, {});

    const auto rows = store->rows();
    ASSERT_EQ(rows.size(), 2u);
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
}

TEST_F(PipelineTest, WorksWithoutAStore) {
    const auto result = make({}, {}, /*withStore=*/false).process(speech, 16000, {});
    EXPECT_EQ(result.polished, "Hello there general kenobi.");
    EXPECT_TRUE(store->rows().empty());
}

TEST_F(PipelineTest, EncodedAudioTakesItsDurationFromTheCaller) {
    make({}).process(WAV::data(speech, 16000), 4321, {});
    EXPECT_EQ(store->rows().at(0).durationMs, 4321);
}

TEST_F(PipelineTest, InterimTranscriptsNeedMoreThanAThirdOfASecond) {
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

// Speech and chat services on loopback, reached the way the relay is.
class PipelineOverTheWire : public ::testing::Test {
protected:
    void SetUp() override {
        service.server().Post("/v1/audio/transcriptions",
                              [](const httplib::Request&, httplib::Response& res) {
                                  res.set_content(R"({"text":" so this is the first dictation \n",)"
                                                  R"("language":"english","duration":1.0})",
                                                  "application/json");
                              });
        service.server().Post(
            "/v1/chat/completions", [this](const httplib::Request&, httplib::Response& res) {
                res.status = chatStatus;
                res.set_content(R"({"choices":[{"message":{"content":"So, this is it."}}]})",
                                "application/json");
            });
        service.start();
    }
    Pipeline pipeline() {
        const std::string root = service.baseURL() + "/v1";
        auto router = std::make_shared<TranscriptionRouter>(
            std::vector<std::shared_ptr<const TranscriptionBackend>>{
                WhisperAPITranscriber::kestrum(root, "token", "whisper")});
        return Pipeline(router, {LLMPolisher::kestrum(root, "token", "llm")}, nullptr, {});
    }

    testing::LoopbackServer service;
    std::atomic<int> chatStatus{200};
};

TEST_F(PipelineOverTheWire, TurnsSamplesIntoPolishedText) {
    const auto result = pipeline().process(tone(16000, 3000), 16000, {});
    EXPECT_EQ(result.raw, "so this is the first dictation");
    EXPECT_EQ(result.polished, "So, this is it.");
    EXPECT_EQ(result.sttBackend, "kestrum");
    EXPECT_EQ(result.polishBackend, "kestrum");
    EXPECT_EQ(result.language, "english");
}

TEST_F(PipelineOverTheWire, FallsBackToTheRulesWhenTheModelFails) {
    chatStatus = 500;
    const auto result = pipeline().process(tone(16000, 3000), 16000, {});
    EXPECT_EQ(result.polished, "So this is the first dictation.");
    EXPECT_EQ(result.polishBackend, "rules");
}

}  // namespace
}  // namespace tevra
