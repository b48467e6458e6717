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
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using nlohmann::json;

// Two chat services ("first" and "second") behind one loopback server, each
// with its own status and reply, and a speech service that always hears the
// same sentence.
class PipelineOverTheWire : public ::testing::Test {
protected:
    struct Request {
        std::string service;
        json body;
    };
    struct Answer {
        int status = 200;
        std::string content;
    };

    void SetUp() override {
        server_.server().Post("/speech/v1/audio/transcriptions",
                              [](const httplib::Request&, httplib::Response& res) {
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
            const json reply = {{"choices", {{{"message", {{"content", answer.content}}}}}}};
            res.status = answer.status;
            res.set_content(reply.dump(), "application/json");
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

    Pipeline pipeline(WeftSettings settings,
                      std::vector<std::string> services = {"first", "second"}) {
        auto router = std::make_shared<TranscriptionRouter>(
            std::vector<std::shared_ptr<const TranscriptionBackend>>{
                WhisperAPITranscriber::kestrum(server_.baseURL() + "/speech/v1", "t", "whisper")});
        std::vector<std::shared_ptr<const PolishBackend>> polishers;
        for (const auto& service : services) {
            polishers.push_back(std::make_shared<LLMPolisher>(
                service, server_.baseURL() + "/" + service + "/v1", "sk", "llm"));
        }
        return Pipeline(router, std::move(polishers), store, std::move(settings));
    }

    static WeftSettings ann() {
        WeftSettings s;
        s.userFirstName = "Ann";
        s.userLastName = "Lee";
        s.userPhone = "555 0100";
        s.signatureStyle = "name_phone";
        return s;
    }

    std::shared_ptr<testing::RecordingStore> store = std::make_shared<testing::RecordingStore>();
    const std::vector<int16_t> speech = std::vector<int16_t>(16000, 3000);

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
    EXPECT_EQ(result.polishBackend, "first");
    EXPECT_DOUBLE_EQ(requests().at(0).body.at("temperature").get<double>(), 0.2);

    answer("first", {500, ""});
    result = pipeline({}, {"first"}).process(speech, 16000, {});
    EXPECT_EQ(result.polished, "Send the report to anna.");
    EXPECT_EQ(result.polishBackend, "rules");
}

TEST_F(PipelineOverTheWire, AVoiceIsComposedEvenWithCleanUpOff) {
    WeftSettings off = ann();
    off.polishEnabled = false;
    answer("first", {200, "Anna, the report is on its way."});
    const Mode email = ModeDefaults::seed().at(2);

    const auto result = pipeline(off).runMode(email, speech, 16000, {});
    EXPECT_EQ(result.raw, "send the report to anna");
    EXPECT_EQ(result.polished, "Anna, the report is on its way.\n\nAnn Lee\n555 0100");
    EXPECT_EQ(result.sttBackend, "kestrum");
    EXPECT_EQ(result.polishBackend, "mode:Email");

    const auto sent = requests();
    ASSERT_EQ(sent.size(), 1u);
    EXPECT_DOUBLE_EQ(sent[0].body.at("temperature").get<double>(), 0.3);
    EXPECT_EQ(sent[0].body.at("messages").at(0).at("content"),
              PromptBuilder::system(email, {}, {}, {}, "Ann Lee"));
    EXPECT_EQ(sent[0].body.at("messages").at(1).at("content"),
              PromptBuilder::user("send the report to anna", {}));
}

TEST_F(PipelineOverTheWire, EveryServiceFailingLeavesTheRuleTextSigned) {
    answer("first", {500, "x"});
    answer("second", {200, "\"\""});  // nothing left once the quotes go
    const auto result = pipeline(ann()).runMode(ModeDefaults::seed().at(4), speech, 16000, {});
    EXPECT_EQ(result.polished, "Send the report to anna.\n\nAnn Lee\n555 0100");
    EXPECT_EQ(requests().size(), 2u);
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].polishBackend, "mode:Formal message");
}

TEST_F(PipelineOverTheWire, AnInstructionReportsTheLastServicesReason) {
    answer("first", {401, ""});
    answer("second", {429, ""});
    try {
        pipeline(ann()).instruct(speech, 16000, {});
        ADD_FAILURE() << "the instruction succeeded";
    } catch (const PipelineError& e) {
        EXPECT_EQ(e.description(), "command failed: HTTP 429 — rate limited, try again shortly");
    }
    EXPECT_TRUE(store->rows().empty());

    answer("second", {200, "Report sent."});
    const auto result = pipeline(ann()).instruct(speech, 16000, {});
    EXPECT_EQ(result.polished, "Report sent.");
    EXPECT_EQ(result.polishBackend, "instruct:second");
    EXPECT_DOUBLE_EQ(requests().back().body.at("temperature").get<double>(), 0.4);
}

TEST_F(PipelineOverTheWire, ATranslationSendsTheUntrimmedTextAtLowTemperature) {
    answer("first", {200, "Good morning"});
    EXPECT_EQ(pipeline({}, {"first"}).translate("\tDzień dobry \n", "EN"), "Good morning");
    const auto sent = requests();
    ASSERT_EQ(sent.size(), 1u);
    const json messages = json::array({
        json{{"role", "system"}, {"content", PromptBuilder::translateSystem("EN")}},
        json{{"role", "user"}, {"content", "\tDzień dobry \n"}},
    });
    EXPECT_EQ(sent[0].body.at("messages"), messages);
    EXPECT_DOUBLE_EQ(sent[0].body.at("temperature").get<double>(), 0.2);
}

}  // namespace
}  // namespace tevra
