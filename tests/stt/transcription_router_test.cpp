#include "stt/transcription_router.h"

#include <gtest/gtest.h>

#include "base/http_client.h"
#include "base/http_errors.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using testing::LoopbackServer;
using testing::ScriptedTranscriber;

std::string failureText(const TranscriptionRouter& router) {
    try {
        router.route("wav", std::nullopt);
    } catch (const RouterError& e) {
        return e.description();
    }
    return "(no failure)";
}

TEST(TranscriptionRouter, TheFirstAnswerWinsEvenWhenEmpty) {
    EXPECT_EQ(failureText(TranscriptionRouter({})), "no transcription backends configured");

    auto first = ScriptedTranscriber::returning("groq", "");
    auto second = ScriptedTranscriber::returning("openai", "text");
    const auto routed = TranscriptionRouter({first, second}).route("wav", std::string("en"));
    EXPECT_EQ(routed.backend, "groq");
    EXPECT_EQ(routed.transcript.text, "");
    EXPECT_TRUE(second->calls().empty());
    EXPECT_EQ(first->calls().at(0).languageHint, "en");
}

TEST(TranscriptionRouter, ReportsEveryFailureInTheOrderTried) {
    EXPECT_EQ(failureText(TranscriptionRouter(
                  {ScriptedTranscriber::failing("groq", WeftHTTPError(429)),
                   ScriptedTranscriber::failing("openai", WeftHTTPError(401))})),
              "all STT backends failed: groq: HTTP 429 — rate limited, try again shortly | "
              "openai: HTTP 401 — check your API key");
    EXPECT_EQ(failureText(TranscriptionRouter(
                  {ScriptedTranscriber::failing("kestrum", WeftHTTPError(403)),
                   ScriptedTranscriber::failing("deepinfra",
                                                HttpTransportError("The request timed out.")),
                   ScriptedTranscriber::failing("fireworks", WeftHTTPError(0))})),
              "all STT backends failed: kestrum: HTTP 403 — check your API key | deepinfra: The "
              "request timed out. | fireworks: HTTP 0");
}

TEST(TranscriptionRouter, FailsOverAcrossRealServicesStartingAtTheHeadEachTime) {
    LoopbackServer limited, rejecting, working;
    for (auto [server, status] : {std::pair{&limited, 429}, {&rejecting, 401}}) {
        server->server().Post(
            "/v1/audio/transcriptions",
            [status](const httplib::Request&, httplib::Response& res) { res.status = status; });
    }
    working.server().Post(
        "/v1/audio/transcriptions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"text":"made it","language":"en"})", "application/json");
        });
    limited.start();
    rejecting.start();
    working.start();
    auto backend = [](const char* name, const LoopbackServer& s) {
        return std::make_shared<WhisperAPITranscriber>(name, s.baseURL() + "/v1", "k", "m");
    };
    auto head = std::make_shared<ScriptedTranscriber>(
        "kestrum", []() -> Transcript { throw std::runtime_error("socket closed"); });
    const TranscriptionRouter router({head, backend("groq", limited), backend("openai", rejecting),
                                      backend("deepinfra", working)});
    for (int call = 1; call <= 2; ++call) {
        const auto routed = router.route("wav", std::nullopt);
        EXPECT_EQ(routed.backend, "deepinfra");
        EXPECT_EQ(routed.transcript.text, "made it");
        EXPECT_EQ(routed.transcript.language, "en");
        EXPECT_EQ(head->calls().size(), static_cast<size_t>(call));
    }
}

}  // namespace
}  // namespace tevra
