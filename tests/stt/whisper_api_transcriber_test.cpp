#include "stt/whisper_api_transcriber.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "base/http_client.h"
#include "base/http_errors.h"
#include "stt/wav.h"
#include "support/loopback_server.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using testing::LoopbackServer;

// A loopback speech service: it parses every request with a real multipart
// parser, keeps what it received, and answers with `reply`.
class WhisperAPITranscriberTest : public ::testing::Test {
protected:
    struct Reply {
        int status = 200;
        std::string body = R"({"text":"hello"})";
        std::chrono::milliseconds delay{0};
    };
    struct Received {
        std::string contentType, authorization;
        std::vector<testing::FormPart> parts;
    };

    void SetUp() override {
        server.server().Post("/openai/v1/audio/transcriptions",
                             [this](const httplib::Request& req, httplib::Response& res,
                                    const httplib::ContentReader& reader) {
                                 server.noteConnection(req);
                                 Received r{req.get_header_value("Content-Type"),
                                            req.get_header_value("Authorization"),
                                            testing::readMultipart(reader)};
                                 Reply answer;
                                 {
                                     std::lock_guard lock(mutex);
                                     received.push_back(std::move(r));
                                     answer = reply;
                                 }
                                 server.stall(answer.delay);
                                 res.status = answer.status;
                                 res.set_content(answer.body, "application/json");
                             });
        server.start();
    }
    void TearDown() override { server.stop(); }

    void answer(Reply r) {
        std::lock_guard lock(mutex);
        reply = std::move(r);
    }
    WhisperAPITranscriber client(double timeout = 30.0) {
        return WhisperAPITranscriber("groq", server.baseURL() + "/openai/v1", "sk-test",
                                     "whisper-large-v3", timeout);
    }
    std::string failure(const WhisperAPITranscriber& c) {
        try {
            c.transcribe(wav, std::nullopt);
        } catch (const std::exception& e) {
            return describe(e);
        }
        return "(no failure)";
    }

    LoopbackServer server;
    std::mutex mutex;
    Reply reply;
    std::vector<Received> received;
    const std::string wav{
        std::string_view(WAV::data(std::vector<int16_t>{0, 100, -100, 7}, 16000))};
};

TEST_F(WhisperAPITranscriberTest, SendsTheMultipartFormInOrderWithTheLanguageOnlyWhenGiven) {
    answer({200, R"({"text":"  Hello there.\n","language":"english","duration":2.5})"});
    const auto c = client();
    const Transcript t = c.transcribe(wav, std::nullopt);
    EXPECT_EQ(t.text, "Hello there.");
    EXPECT_EQ(t.language, "english");
    EXPECT_EQ(t.durationSec, 2.5);
    c.transcribe(wav, std::string("pl"));
    c.transcribe(wav, std::string(""));

    ASSERT_EQ(received.size(), 3u);
    const auto& r = received[0];
    EXPECT_TRUE(std::regex_match(
        r.contentType, std::regex("multipart/form-data; boundary=weft-[0-9A-F]{8}-[0-9A-F]{4}-"
                                  "[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}")))
        << r.contentType;
    EXPECT_EQ(r.authorization, "Bearer sk-test");
    const std::vector<std::vector<std::string>> expected = {
        {"model", "", "", "whisper-large-v3"},
        {"response_format", "", "", "verbose_json"},
        {"file", "audio.wav", "audio/wav", wav}};
    auto fields = [](const std::vector<testing::FormPart>& parts) {
        std::vector<std::vector<std::string>> out;
        for (const auto& p : parts) {
            out.push_back({p.name, p.filename, p.contentType, p.content});
        }
        return out;
    };
    EXPECT_EQ(fields(r.parts), expected);
    auto withLanguage = expected;
    withLanguage.insert(withLanguage.begin() + 2, {"language", "", "", "pl"});
    EXPECT_EQ(fields(received[1].parts), withLanguage);
    EXPECT_EQ(fields(received[2].parts), expected);

    EXPECT_EQ(WhisperAPITranscriber::multipartBody("weft-B", "RIFFDATA", "m1", std::string("pl")),
              "--weft-B\r\nContent-Disposition: form-data; name=\"model\"\r\n\r\nm1\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"response_format\"\r\n\r\n"
              "verbose_json\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"language\"\r\n\r\npl\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"file\"; "
              "filename=\"audio.wav\"\r\nContent-Type: audio/wav\r\n\r\nRIFFDATA"
              "\r\n--weft-B--\r\n");
    EXPECT_NE(WhisperAPITranscriber::makeBoundary(), WhisperAPITranscriber::makeBoundary());
}

TEST_F(WhisperAPITranscriberTest, ReadsOnlyWhatItNeedsFromTheAnswer) {
    answer({200, R"({"task":"transcribe","text":"ok","segments":[{"id":0}],"x_groq":{}})"});
    const Transcript t = client().transcribe(wav, std::nullopt);
    EXPECT_EQ(t.text, "ok");
    EXPECT_EQ(t.language, std::nullopt);
    EXPECT_EQ(t.durationSec, std::nullopt);
    answer({200, R"({"text":" \n\t "})"});
    EXPECT_EQ(client().transcribe(wav, std::nullopt).text, "") << "blank text is not an error";
}

TEST_F(WhisperAPITranscriberTest, EveryOtherAnswerFailsWithItsText) {
    const std::pair<Reply, std::string> cases[] = {
        {{201, "{}"}, "HTTP 201"},
        {{401, R"({"error":{"message":"never shown"}})"}, "HTTP 401 — check your API key"},
        {{403, "{}"}, "HTTP 403 — check your API key"},
        {{429, "{}"}, "HTTP 429 — rate limited, try again shortly"},
        {{500, "{}"}, "HTTP 500"},
        {{200, R"({"language":"en"})"}, "the transcription has no \"text\" string"},
    };
    for (const auto& [r, text] : cases) {
        answer(r);
        EXPECT_EQ(failure(client()), text);
    }
    answer({200, "{not json"});
    EXPECT_THAT(failure(client()), ::testing::StartsWith("the transcription is not valid JSON"));
    EXPECT_THROW(WhisperAPITranscriber::parseVerboseJSON(R"({"text":"a","duration":"long"})"),
                 DecodingError);
}

TEST_F(WhisperAPITranscriberTest, ASilentServerOrARefusedConnectionIsATransportError) {
    answer({200, R"({"text":"late"})", std::chrono::seconds(20)});
    // The client's own time-out, not the server's answer 20 s later.
    EXPECT_EQ(failure(client(1.0)), "The request timed out.");

    const WhisperAPITranscriber nobody(
        "openai", "http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()), "k", "m");
    EXPECT_THAT(failure(nobody), HasSubstr("Couldn't connect"));
}

TEST_F(WhisperAPITranscriberTest, ReusesItsConnectionAndServesThreadsAtOnce) {
    const auto c = client();
    for (int i = 0; i < 3; ++i) {
        c.transcribe(wav, std::nullopt);
    }
    EXPECT_EQ(server.connectionPorts().size(), 1u);

    std::atomic<int> ok{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] { ok += c.transcribe(wav, std::nullopt).text == "hello"; });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(ok, 4);
}

TEST(WhisperAPITranscriberFactories, NameTheServiceAndItsRoot) {
    const std::pair<std::shared_ptr<WhisperAPITranscriber>, std::string> cases[] = {
        {WhisperAPITranscriber::groq("g", "m"), "groq https://api.groq.com/openai/v1 Bearer g"},
        {WhisperAPITranscriber::openai("o", "m"), "openai https://api.openai.com/v1 Bearer o"},
        {WhisperAPITranscriber::deepinfra("d", "m"),
         "deepinfra https://api.deepinfra.com/v1/openai Bearer d"},
        {WhisperAPITranscriber::kestrum("https://relay.example/v1", "tok", "m"),
         "kestrum https://relay.example/v1 Bearer tok"},
        // The host follows the model name, case-sensitively.
        {WhisperAPITranscriber::fireworks("f", "whisper-v3-turbo"),
         std::string("fireworks ") + WhisperAPITranscriber::kFireworksTurboRoot + " Bearer f"},
        {WhisperAPITranscriber::fireworks("f", "whisper-v3"),
         std::string("fireworks ") + WhisperAPITranscriber::kFireworksProductionRoot + " Bearer f"},
        {WhisperAPITranscriber::fireworks("f", "whisper-v3-TURBO"),
         std::string("fireworks ") + WhisperAPITranscriber::kFireworksProductionRoot + " Bearer f"},
    };
    for (const auto& [backend, expected] : cases) {
        EXPECT_EQ(backend->name() + " " + backend->baseURL() + " " + backend->authorizationHeader(),
                  expected);
    }
    EXPECT_THAT(WhisperAPITranscriber::kFireworksTurboRoot, HasSubstr("audio-turbo"));
    EXPECT_THAT(WhisperAPITranscriber::kFireworksProductionRoot, HasSubstr("audio-prod"));
}

}  // namespace
}  // namespace tevra
