// Every path of the pipeline with the real speech and chat clients against
// services on loopback.

#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <nlohmann/json.hpp>

#include "core/pipeline.h"
#include "polish/llm_polisher.h"
#include "polish/mode_defaults.h"
#include "polish/prompt_builder.h"
#include "polish/rules_polisher.h"
#include "stt/wav.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using nlohmann::json;

std::string failure(const std::function<void()>& call) {
    try {
        call();
    } catch (const PipelineError& e) {
        return e.description();
    }
    return "(no PipelineError)";
}

// Chat services ("first", "second", ...) behind one loopback server, each with
// its own status and reply, and a speech service that always hears the same
// sentence.
class PipelineOverTheWire : public ::testing::Test {
protected:
    struct Request {
        std::string service;
        json body;
        double temperature() const { return body.at("temperature").get<double>(); }
        std::string message(int i) const { return body.at("messages").at(i).at("content"); }
    };
    struct Answer {
        int status = 200;
        std::string content;
    };

    void SetUp() override {
        server_.server().Post("/speech/v1/audio/transcriptions",
                              [this](const httplib::Request&, httplib::Response& res) {
                                  ++heard;
                                  res.set_content(R"({"text":" send the report to anna ",)"
                                                  R"("language":"english","duration":1.0})",
                                                  "application/json");
                              });
        server_.server().Post(R"(/(\w+)/v1/chat/completions)", [this](const httplib::Request& req,
                                                                      httplib::Response& res) {
            const std::string service = req.matches[1];
            Answer answer;
            {
                std::lock_guard lock(mutex_);
                requests_.push_back({service, json::parse(req.body)});
                answer = answers_[service];
            }
            res.status = answer.status;
            res.set_content(
                json{{"choices", {{{"message", {{"content", answer.content}}}}}}}.dump(),
                "application/json");
        });
        server_.start();
    }
    void TearDown() override { server_.stop(); }

    void answer(const std::string& service, Answer a) {
        std::lock_guard lock(mutex_);
        answers_[service] = std::move(a);
    }
    std::vector<Request> requests() {
        std::lock_guard lock(mutex_);
        return requests_;
    }

    std::shared_ptr<const PolishBackend> llm(const std::string& service) {
        return std::make_shared<LLMPolisher>(service, server_.baseURL() + "/" + service + "/v1",
                                             "sk", "llm");
    }
    Pipeline pipeline(WeftSettings settings,
                      std::vector<std::string> services = {"first", "second"}) {
        std::vector<std::shared_ptr<const PolishBackend>> polishers;
        for (const auto& service : services) {
            polishers.push_back(llm(service));
        }
        return pipelineWith(std::move(settings), std::move(polishers));
    }
    Pipeline pipelineWith(WeftSettings settings,
                          std::vector<std::shared_ptr<const PolishBackend>> polishers) {
        auto router = std::make_shared<TranscriptionRouter>(
            std::vector<std::shared_ptr<const TranscriptionBackend>>{
                WhisperAPITranscriber::kestrum(server_.baseURL() + "/speech/v1", "t", "whisper")});
        return Pipeline(router, std::move(polishers), store, std::move(settings));
    }

    static WeftSettings ann() {
        WeftSettings s;
        s.userFirstName = "Ann";
        s.userLastName = "Lee";
        s.userPhone = "555 0100";
        s.userCompany = "Acme";
        s.signatureStyle = "name_phone";
        return s;
    }

    std::shared_ptr<testing::RecordingStore> store = std::make_shared<testing::RecordingStore>();
    const std::vector<int16_t> speech = std::vector<int16_t>(24000, 3000);
    const std::vector<int16_t> quiet = std::vector<int16_t>(16000, 119);
    const Mode email = ModeDefaults::seed().at(2);
    const PolishContext mail{"Mail", "org.gnome.Evolution", "Re: report", std::nullopt, "warm"};
    std::atomic<int> heard{0};

private:
    testing::LoopbackServer server_;
    std::mutex mutex_;
    std::vector<Request> requests_;
    std::map<std::string, Answer> answers_;
};

TEST_F(PipelineOverTheWire, PlainDictationPolishesThroughTheModelOrFallsBackToTheRules) {
    answer("first", {200, "Send the report to Anna."});
    auto result = pipeline({}, {"first"}).process(speech, 16000, {});
    EXPECT_EQ(result.raw, "send the report to anna");
    EXPECT_EQ(result.polished, "Send the report to Anna.");
    EXPECT_EQ(result.language, "english");
    EXPECT_EQ(result.sttBackend, "kestrum");
    EXPECT_EQ(result.polishBackend, "first");
    EXPECT_DOUBLE_EQ(requests().at(0).temperature(), 0.2);

    answer("first", {500, ""});
    result = pipeline({}, {"first"}).process(speech, 16000, {});
    EXPECT_EQ(result.polished, "Send the report to anna.");
    EXPECT_EQ(result.polishBackend, "rules");
}

TEST_F(PipelineOverTheWire, AVoiceComposesWithItsPromptAndSignsOffEvenWithCleanUpOff) {
    store->dictionaryWords = {"Acme"};
    store->replacementRules = {Replacement{"anna", "Anna"}};
    store->snippetList = {Snippet{"addr", "1 Main St"}};
    WeftSettings off = ann();
    off.polishEnabled = false;
    answer("first", {500, "x"});
    answer("second", {200, "Anna, the report is on its way."});

    const auto result = pipeline(off).runMode(email, speech, 16000, mail);
    EXPECT_EQ(result.raw, "send the report to anna");
    EXPECT_EQ(result.polished, "Anna, the report is on its way.\n\nAnn Lee\n555 0100");
    EXPECT_EQ(result.polishBackend, "mode:Email");
    const auto sent = requests();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_DOUBLE_EQ(sent[1].temperature(), 0.3);
    EXPECT_EQ(sent[1].message(0),
              PromptBuilder::system(email, store->dictionaryWords, store->replacementRules,
                                    store->snippetList, "Ann Lee of Acme"));
    EXPECT_EQ(sent[1].message(1), PromptBuilder::user("send the report to anna", mail));
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].durationMs, 1500);
    EXPECT_EQ(store->rows()[0].polishBackend, "mode:Email");

    // The sign-off follows the voice's switch and the user's details; the
    // switch's own text is never printed.
    Mode marked = email;
    marked.signature = "Sent from my phone";
    answer("first", {200, "Body."});
    EXPECT_EQ(pipeline(ann()).runMode(marked, speech, 16000, {}).polished,
              "Body.\n\nAnn Lee\n555 0100");
    marked.signature = "";
    EXPECT_EQ(pipeline(ann()).runMode(marked, speech, 16000, {}).polished, "Body.");
    WeftSettings nobody;
    nobody.signatureStyle = "full";
    EXPECT_EQ(pipeline(nobody).runMode(email, speech, 16000, {}).polished, "Body.");
}

TEST_F(PipelineOverTheWire, EveryServiceFailingLeavesTheRuleTextSigned) {
    answer("first", {500, "x"});
    answer("second", {200, "\"\""});  // nothing left once the quotes go
    const auto result = pipeline(ann()).runMode(ModeDefaults::seed().at(4), speech, 16000, {});
    EXPECT_EQ(result.polished, "Send the report to anna.\n\nAnn Lee\n555 0100");
    EXPECT_EQ(requests().size(), 2u);
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].polishBackend, "mode:Formal message");
    EXPECT_EQ(pipelineWith(ann(), {}).runMode(email, speech, 16000, {}).polishBackend,
              "mode:Email");
}

TEST_F(PipelineOverTheWire, EncodedAudioAndScreenTextPaths) {
    answer("first", {200, "Clean text."});
    // Encoded audio: no silence test and no history.
    const auto fromWav =
        pipeline(ann()).runModeOnWav(email, WAV::data(std::vector<int16_t>(1600), 16000), mail);
    EXPECT_EQ(fromWav.polished, "Clean text.\n\nAnn Lee\n555 0100");
    EXPECT_EQ(fromWav.polishBackend, "mode:Email");
    EXPECT_TRUE(store->rows().empty());

    // Text handed in is not transcribed, and counts as read off the screen.
    const auto fromText =
        pipeline(ann()).runModeOnText(ModeDefaults::seed().at(3), " 0rder ", mail);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(requests().back().message(1), PromptBuilder::user(" 0rder ", mail));
    EXPECT_EQ(fromText.raw, " 0rder ");
    EXPECT_EQ(fromText.language, "zh") << "the voice's output language";
    EXPECT_EQ(fromText.sttBackend, "ocr");
    EXPECT_EQ(fromText.polishBackend, "mode:Formal message — 中文");
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].sttBackend, "ocr");
    EXPECT_EQ(store->rows()[0].durationMs, 0);

    // Near silence stops every spoken path before the network.
    const Pipeline p = pipeline(ann());
    const std::string nearSilent = "no speech detected (audio near-silent)";
    EXPECT_EQ(failure([&] { p.runMode(email, quiet, 16000, {}); }), nearSilent);
    EXPECT_EQ(failure([&] { p.instruct(quiet, 16000, {}); }), nearSilent);
    EXPECT_EQ(failure([&] { p.dictateToTranslate(quiet, 16000, "de", {}); }), nearSilent);
    EXPECT_EQ(heard, 1);
    EXPECT_EQ(requests().size(), 2u);
}

TEST_F(PipelineOverTheWire, AnInstructionNeedsAModelAndReportsTheLastServicesReason) {
    store->dictionaryWords = {"Tevra"};
    answer("first", {401, ""});
    answer("second", {429, ""});
    EXPECT_EQ(failure([&] { pipeline(ann()).instruct(speech, 16000, {}); }),
              "command failed: HTTP 429 — rate limited, try again shortly");
    EXPECT_TRUE(store->rows().empty()) << "no rule fallback, nothing stored";

    // The rule step is skipped, clean-up off or not; no sign-off.
    WeftSettings off = ann();
    off.polishEnabled = false;
    answer("second", {200, "Report sent."});
    const auto result =
        pipelineWith(off, {std::make_shared<RulesPolisher>(), llm("first"), llm("second")})
            .instruct(speech, 16000, mail);
    EXPECT_EQ(result.polished, "Report sent.");
    EXPECT_EQ(result.polishBackend, "instruct:second");
    EXPECT_DOUBLE_EQ(requests().back().temperature(), 0.4);
    EXPECT_EQ(requests().back().message(0), PromptBuilder::instructSystem({"Tevra"}));
    EXPECT_EQ(requests().back().message(1), PromptBuilder::user("send the report to anna", mail));
    pipeline(ann()).instruct(WAV::data(speech, 16000), 777, {});
    ASSERT_EQ(store->rows().size(), 2u);
    EXPECT_EQ(store->rows()[1].durationMs, 777);

    EXPECT_EQ(failure([&] { pipelineWith(ann(), {}).instruct(speech, 16000, {}); }),
              "command failed: no LLM backend available");
    EXPECT_EQ(failure([&] {
                  pipelineWith(ann(), {llm("first"), std::make_shared<RulesPolisher>()})
                      .instruct(speech, 16000, {});
              }),
              "command failed: rules cannot execute instructions (needs an LLM)");
}

TEST_F(PipelineOverTheWire, ATranslationSendsTheUntrimmedTextAtLowTemperature) {
    answer("first", {503, ""});
    answer("second", {200, "Good morning"});
    EXPECT_EQ(pipeline({}).translate("\tDzień dobry \n", "EN"), "Good morning");
    const auto sent = requests();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[1].body.at("messages"),
              json::array({{{"role", "system"}, {"content", PromptBuilder::translateSystem("EN")}},
                           {{"role", "user"}, {"content", "\tDzień dobry \n"}}}));
    EXPECT_DOUBLE_EQ(sent[1].temperature(), 0.2);
    EXPECT_TRUE(store->rows().empty()) << "a translation alone is not history";

    EXPECT_EQ(failure([&] { pipeline({}).translate(" \n\t ", "en"); }),
              "transcription came back empty");
    EXPECT_EQ(failure([&] { pipelineWith({}, {}).translate("Dzień dobry", "en"); }),
              "command failed: no LLM backend available");
    answer("second", {401, ""});
    EXPECT_EQ(failure([&] {
                  pipeline({}, {"second", "first"}).translate("x", "en");
              }),
              "command failed: HTTP 503");
}

TEST_F(PipelineOverTheWire, DictationEndsInATranslation) {
    answer("first", {200, "Schick Anna den Bericht."});
    const auto result = pipeline(ann()).dictateToTranslate(speech, 16000, "de", mail);
    EXPECT_EQ(result.raw, "send the report to anna");
    EXPECT_EQ(result.polished, "Schick Anna den Bericht.");
    EXPECT_EQ(result.polishBackend, "translate:de");
    EXPECT_EQ(requests().at(0).message(0), PromptBuilder::translateSystem("de"));
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].polishBackend, "translate:de");
    EXPECT_EQ(
        failure([&] { pipelineWith(ann(), {}).dictateToTranslate(speech, 16000, "de", mail); }),
        "command failed: no LLM backend available");
    EXPECT_EQ(store->rows().size(), 1u);
}

}  // namespace
}  // namespace tevra
