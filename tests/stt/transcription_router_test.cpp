#include "stt/transcription_router.h"

#include <gtest/gtest.h>

#include "core/http_client.h"
#include "stt/weft_errors.h"
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

TEST(TranscriptionRouter, NoBackendsFailsWithoutCallingAnything) {
    const TranscriptionRouter router({});
    try {
        router.route("wav", std::nullopt);
        FAIL();
    } catch (const RouterError& e) {
        EXPECT_EQ(e.kind(), RouterError::Kind::noBackends);
        EXPECT_EQ(e.description(), "no transcription backends configured");
    }
}

TEST(TranscriptionRouter, FirstAnswerWinsEvenWhenEmpty) {
    auto first = ScriptedTranscriber::returning("groq", "");
    auto second = ScriptedTranscriber::returning("openai", "text");
    const TranscriptionRouter router({first, second});
    const auto routed = router.route("wav", std::string("en"));
    EXPECT_EQ(routed.backend, "groq");
    EXPECT_EQ(routed.transcript.text, "");
    EXPECT_TRUE(second->calls().empty());
    ASSERT_EQ(first->calls().size(), 1u);
    EXPECT_EQ(first->calls()[0].languageHint, "en");
}

TEST(TranscriptionRouter, FailsOverInOrderAndForgetsEarlierFailures) {
    auto a = ScriptedTranscriber::failing("kestrum", WeftHTTPError(500));
    auto b = ScriptedTranscriber::failing("groq", std::runtime_error("socket closed"));
    auto c = ScriptedTranscriber::returning("openai", "hello", "en");
    const TranscriptionRouter router({a, b, c});
    const auto routed = router.route("bytes", std::nullopt);
    EXPECT_EQ(routed.backend, "openai");
    EXPECT_EQ(routed.transcript.text, "hello");
    EXPECT_EQ(routed.transcript.language, "en");
    EXPECT_EQ(b->calls().at(0).wav, "bytes");
    EXPECT_EQ(c->calls().at(0).wav, "bytes");

    // Each call starts again at the head of the list.
    router.route("bytes", std::nullopt);
    EXPECT_EQ(a->calls().size(), 2u);
}

TEST(TranscriptionRouter, ReportsEveryFailureInTheOrderTried) {
    const TranscriptionRouter two({ScriptedTranscriber::failing("groq", WeftHTTPError(429)),
                                   ScriptedTranscriber::failing("openai", WeftHTTPError(401))});
    EXPECT_EQ(failureText(two),
              "all STT backends failed: groq: HTTP 429 — rate limited, try again shortly | "
              "openai: HTTP 401 — check your API key");

    const TranscriptionRouter three(
        {ScriptedTranscriber::failing("kestrum", WeftHTTPError(403)),
         ScriptedTranscriber::failing("deepinfra", HttpTransportError("The request timed out.")),
         ScriptedTranscriber::failing("fireworks", WeftHTTPError(0))});
    EXPECT_EQ(failureText(three),
              "all STT backends failed: kestrum: HTTP 403 — check your API key | deepinfra: The "
              "request timed out. | fireworks: HTTP 0");
}

TEST(TranscriptionRouter, FailsOverAcrossRealServices) {
    // Two services on the wire that refuse, and a third one that answers.
    LoopbackServer limited, rejecting, working;
    limited.server().Post(
        "/v1/audio/transcriptions",
        [](const httplib::Request&, httplib::Response& res) { res.status = 429; });
    rejecting.server().Post(
        "/v1/audio/transcriptions",
        [](const httplib::Request&, httplib::Response& res) { res.status = 401; });
    working.server().Post("/v1/audio/transcriptions",
                          [](const httplib::Request&, httplib::Response& res) {
                              res.set_content(R"({"text":"made it"})", "application/json");
                          });
    limited.start();
    rejecting.start();
    working.start();
    auto backend = [](const char* name, const LoopbackServer& s) {
        return std::make_shared<WhisperAPITranscriber>(name, s.baseURL() + "/v1", "k", "m");
    };
    const TranscriptionRouter failing({backend("groq", limited), backend("openai", rejecting)});
    EXPECT_EQ(failureText(failing),
              "all STT backends failed: groq: HTTP 429 — rate limited, try again shortly | "
              "openai: HTTP 401 — check your API key");

    const TranscriptionRouter router(
        {backend("groq", limited), backend("openai", rejecting), backend("deepinfra", working)});
    const auto routed = router.route("wav", std::nullopt);
    EXPECT_EQ(routed.backend, "deepinfra");
    EXPECT_EQ(routed.transcript.text, "made it");
}

}  // namespace
}  // namespace tevra
