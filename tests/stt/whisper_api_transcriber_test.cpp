#include "stt/whisper_api_transcriber.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <thread>

#include "core/http_client.h"
#include "stt/wav.h"
#include "stt/weft_errors.h"
#include "support/loopback_server.h"

namespace tevra {
namespace {

using testing::FormPart;
using ::testing::HasSubstr;
using testing::LoopbackServer;
using ::testing::StartsWith;

// A loopback speech service: checks the protocol of every request, keeps what
// it received, and answers with whatever the test has put in `reply`.
class SpeechServer {
public:
    struct Reply {
        int status = 200;
        std::string body = R"({"text":"hello"})";
        std::chrono::milliseconds delay{0};
    };

    SpeechServer() {
        server_.server().Post("/openai/v1/audio/transcriptions",
                              [this](const httplib::Request& req, httplib::Response& res,
                                     const httplib::ContentReader& reader) {
                                  server_.noteConnection(req);
                                  Received r;
                                  r.contentType = req.get_header_value("Content-Type");
                                  r.authorization = req.get_header_value("Authorization");
                                  r.parts = testing::readMultipart(reader);
                                  Reply reply;
                                  {
                                      std::lock_guard lock(mutex_);
                                      received_.push_back(r);
                                      reply = reply_;
                                  }
                                  if (reply.delay.count() > 0) {
                                      server_.stall(reply.delay);
                                  }
                                  res.status = reply.status;
                                  res.set_content(reply.body, "application/json");
                              });
        server_.start();
    }

    std::string baseURL() const { return server_.baseURL() + "/openai/v1"; }
    void setReply(Reply r) {
        std::lock_guard lock(mutex_);
        reply_ = std::move(r);
    }

    struct Received {
        std::string contentType;
        std::string authorization;
        std::vector<FormPart> parts;
    };
    std::vector<Received> received() const {
        std::lock_guard lock(mutex_);
        return received_;
    }
    LoopbackServer& loopback() { return server_; }

private:
    LoopbackServer server_;
    mutable std::mutex mutex_;
    Reply reply_;
    std::vector<Received> received_;
};

class WhisperAPITranscriberTest : public ::testing::Test {
protected:
    std::shared_ptr<WhisperAPITranscriber> client(double timeout = 30.0) {
        return std::make_shared<WhisperAPITranscriber>("groq", server.baseURL(), "sk-test",
                                                       "whisper-large-v3", timeout);
    }
    std::string describeFailure(const std::function<void()>& call) {
        try {
            call();
        } catch (const std::exception& e) {
            return describe(e);
        }
        return "(no failure)";
    }

    SpeechServer server;
    const std::vector<int16_t> samples = {0, 100, -100, 32767, -32768, 7};
    const std::string wav{std::string_view(WAV::data(samples, 16000))};
};

TEST_F(WhisperAPITranscriberTest, SendsTheMultipartFormInOrder) {
    server.setReply({200, R"({"text":"  Hello there.\n","language":"english","duration":2.5})"});
    const Transcript t = client()->transcribe(wav, std::nullopt);
    EXPECT_EQ(t.text, "Hello there.");
    EXPECT_EQ(t.language, "english");
    EXPECT_EQ(t.durationSec, 2.5);

    const auto received = server.received();
    ASSERT_EQ(received.size(), 1u);
    const auto& r = received[0];
    EXPECT_TRUE(std::regex_match(
        r.contentType, std::regex("multipart/form-data; boundary=weft-[0-9A-F]{8}-[0-9A-F]{4}-"
                                  "[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}")))
        << r.contentType;
    EXPECT_EQ(r.authorization, "Bearer sk-test");
    ASSERT_EQ(r.parts.size(), 3u);
    EXPECT_EQ(r.parts[0].name, "model");
    EXPECT_EQ(r.parts[0].content, "whisper-large-v3");
    EXPECT_EQ(r.parts[1].name, "response_format");
    EXPECT_EQ(r.parts[1].content, "verbose_json");
    EXPECT_EQ(r.parts[2].name, "file");
    EXPECT_EQ(r.parts[2].filename, "audio.wav");
    EXPECT_EQ(r.parts[2].contentType, "audio/wav");
    EXPECT_EQ(r.parts[2].content, wav);
}

TEST_F(WhisperAPITranscriberTest, LanguageFieldOnlyWithANonEmptyHint) {
    auto c = client();
    c->transcribe(wav, std::string("pl"));
    c->transcribe(wav, std::string(""));
    const auto received = server.received();
    ASSERT_EQ(received.size(), 2u);
    ASSERT_EQ(received[0].parts.size(), 4u);
    EXPECT_EQ(received[0].parts[2].name, "language");
    EXPECT_EQ(received[0].parts[2].content, "pl");
    EXPECT_EQ(received[0].parts[3].name, "file");
    EXPECT_EQ(received[1].parts.size(), 3u);
}

TEST_F(WhisperAPITranscriberTest, ReadsOnlyWhatItNeedsFromTheAnswer) {
    server.setReply(
        {200, R"({"task":"transcribe","text":"ok","segments":[{"id":0}],"x_groq":{}})"});
    const Transcript t = client()->transcribe(wav, std::nullopt);
    EXPECT_EQ(t.text, "ok");
    EXPECT_EQ(t.language, std::nullopt);
    EXPECT_EQ(t.durationSec, std::nullopt);

    server.setReply({200, R"({"text":" \n\t "})"});
    EXPECT_EQ(client()->transcribe(wav, std::nullopt).text, "") << "blank text is not an error";
}

TEST_F(WhisperAPITranscriberTest, OnlyStatus200Counts) {
    const std::vector<std::pair<int, std::string>> cases = {
        {201, "HTTP 201"},
        {401, "HTTP 401 — check your API key"},
        {403, "HTTP 403 — check your API key"},
        {429, "HTTP 429 — rate limited, try again shortly"},
        {500, "HTTP 500"},
    };
    for (const auto& [status, text] : cases) {
        server.setReply({status, R"({"error":{"message":"service text that is never shown"}})"});
        try {
            client()->transcribe(wav, std::nullopt);
            ADD_FAILURE() << "status " << status << " should fail";
        } catch (const WeftHTTPError& e) {
            EXPECT_EQ(e.status(), status);
            EXPECT_EQ(e.description(), text);
        }
    }
}

TEST_F(WhisperAPITranscriberTest, UndecodableAnswersCarryTheDecoderText) {
    server.setReply({200, "{not json"});
    EXPECT_THAT(describeFailure([&] { client()->transcribe(wav, std::nullopt); }),
                StartsWith("the transcription is not valid JSON"));
    server.setReply({200, R"({"language":"en"})"});
    EXPECT_EQ(describeFailure([&] { client()->transcribe(wav, std::nullopt); }),
              "the transcription has no \"text\" string");
    EXPECT_THROW(WhisperAPITranscriber::parseVerboseJSON(R"({"text":"a","duration":"long"})"),
                 DecodingError);
}

TEST_F(WhisperAPITranscriberTest, ASilentServerTripsTheInactivityLimit) {
    server.setReply({200, R"({"text":"late"})", std::chrono::seconds(20)});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THROW(client(1.0)->transcribe(wav, std::nullopt), HttpTransportError);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
}

TEST_F(WhisperAPITranscriberTest, ARefusedConnectionIsATransportError) {
    WhisperAPITranscriber c(
        "openai", "http://127.0.0.1:" + std::to_string(LoopbackServer::closedPort()), "k", "m");
    EXPECT_THAT(describeFailure([&] { c.transcribe(wav, std::nullopt); }),
                HasSubstr("Couldn't connect"));
}

TEST_F(WhisperAPITranscriberTest, ReusesItsConnectionAndServesThreadsAtOnce) {
    auto c = client();
    c->transcribe(wav, std::nullopt);
    c->transcribe(wav, std::nullopt);
    c->transcribe(wav, std::nullopt);
    EXPECT_EQ(server.loopback().connectionPorts().size(), 1u);

    std::vector<std::thread> threads;
    std::atomic<int> ok{0};
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            if (c->transcribe(wav, std::nullopt).text == "hello") {
                ++ok;
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(ok, 4);
}

TEST(WhisperAPITranscriberBody, IsWrittenByteForByte) {
    const ByteBuffer body =
        WhisperAPITranscriber::multipartBody("weft-B", "RIFFDATA", "m1", std::string("pl"));
    EXPECT_EQ(body,
              "--weft-B\r\nContent-Disposition: form-data; name=\"model\"\r\n\r\nm1\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"response_format\"\r\n\r\n"
              "verbose_json\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"language\"\r\n\r\npl\r\n"
              "--weft-B\r\nContent-Disposition: form-data; name=\"file\"; "
              "filename=\"audio.wav\"\r\nContent-Type: audio/wav\r\n\r\nRIFFDATA"
              "\r\n--weft-B--\r\n");
    EXPECT_NE(WhisperAPITranscriber::makeBoundary(), WhisperAPITranscriber::makeBoundary());
}

TEST(WhisperAPITranscriberFactories, NameTheServiceAndItsRoot) {
    const auto groq = WhisperAPITranscriber::groq("g", "whisper-large-v3-turbo");
    EXPECT_EQ(groq->name(), "groq");
    EXPECT_EQ(groq->baseURL(), "https://api.groq.com/openai/v1");
    EXPECT_EQ(groq->authorizationHeader(), "Bearer g");
    EXPECT_EQ(WhisperAPITranscriber::openai("o", "whisper-1")->baseURL(),
              "https://api.openai.com/v1");
    EXPECT_EQ(WhisperAPITranscriber::deepinfra("d", "m")->baseURL(),
              "https://api.deepinfra.com/v1/openai");
    const auto relay = WhisperAPITranscriber::kestrum("https://relay.example/v1", "tok", "m");
    EXPECT_EQ(relay->name(), "kestrum");
    EXPECT_EQ(relay->baseURL(), "https://relay.example/v1");
    EXPECT_EQ(relay->authorizationHeader(), "Bearer tok");

    const auto turbo = WhisperAPITranscriber::fireworks("f", "whisper-v3-turbo");
    const auto production = WhisperAPITranscriber::fireworks("f", "whisper-v3");
    const auto upper = WhisperAPITranscriber::fireworks("f", "whisper-v3-TURBO");
    EXPECT_EQ(turbo->name(), "fireworks");
    EXPECT_THAT(turbo->baseURL(), HasSubstr("audio-turbo"));
    EXPECT_THAT(production->baseURL(), HasSubstr("audio-prod"));
    EXPECT_THAT(upper->baseURL(), HasSubstr("audio-prod")) << "the match is case-sensitive";
}

}  // namespace
}  // namespace tevra
