// tevractl end to end: the real program, a fresh data directory, and loopback
// speech and chat services reached through the relay setting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "store/history_store.h"
#include "stt/wav.h"
#include "support/loopback_server.h"
#include "support/subprocess.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class TevractlTest : public ::testing::Test {
protected:
    void SetUp() override {
        service.server().Post("/v1/audio/transcriptions", [this](const httplib::Request& req,
                                                                 httplib::Response& res) {
            if (req.get_header_value("Authorization") != "Bearer relay-token") {
                res.status = 401;
                return;
            }
            res.status = speechStatus;
            res.set_content(R"({"text":"hello from the command line"})", "application/json");
        });
        service.server().Post(
            "/v1/chat/completions", [](const httplib::Request&, httplib::Response& res) {
                res.set_content(
                    R"({"choices":[{"message":{"content":"Hello from the command line!"}}]})",
                    "application/json");
            });
        service.start();
        std::filesystem::create_directories(dataDir());
        std::ofstream(dataDir() / "settings.json")
            << nlohmann::json{{"proxyBaseURL", service.baseURL() + "/v1"}}.dump();
    }

    std::filesystem::path dataDir() const { return home / "data" / "Tevra"; }

    testing::ProcessResult tevractl(std::vector<std::string> args,
                                    std::map<std::string, std::optional<std::string>> env = {}) {
        args.insert(args.begin(), TEVRACTL_PATH);
        env.emplace("XDG_DATA_HOME", (home / "data").string());
        env.emplace("HOME", home.path().string());
        env.emplace("TEVRA_PROXY_TOKEN", "relay-token");
        for (const char* name :
             {"GROQ_API_KEY", "OPENAI_API_KEY", "DEEPINFRA_API_KEY", "FIREWORKS_API_KEY"}) {
            env.emplace(name, std::nullopt);
        }
        return testing::runProcess(args, env);
    }

    // One second of loud square wave at 24 kHz.
    std::string writeSpeech() {
        std::vector<int16_t> samples(24000);
        for (size_t i = 0; i < samples.size(); ++i) {
            samples[i] = static_cast<int16_t>(i % 40 < 20 ? 2500 : -2500);
        }
        speechBytes = std::string(std::string_view(WAV::data(samples, 24000)));
        std::ofstream(home / "speech.wav", std::ios::binary) << speechBytes;
        return (home / "speech.wav").string();
    }

    testing::TempDir home;
    testing::LoopbackServer service;
    std::atomic<int> speechStatus{200};
    std::string speechBytes;
};

TEST_F(TevractlTest, DictatesAFileAndKeepsItInHistory) {
    const auto run = tevractl({"dictate", writeSpeech()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "Hello from the command line!\n");

    HistoryStore store((dataDir() / "weft.sqlite").string());
    const auto rows = store.recent(10);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].app, "tevractl");
    EXPECT_EQ(rows[0].raw, "hello from the command line");
    EXPECT_EQ(rows[0].sttBackend, "kestrum");
    EXPECT_THAT(rows[0].polishBackend, StartsWith("mode:"));
    EXPECT_EQ(rows[0].durationMs, 1000);

    const auto history = tevractl({"history", "--json"});
    ASSERT_EQ(history.exitCode, 0) << history.err;
    const auto list = nlohmann::json::parse(history.out);
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]["polished"], "Hello from the command line!");

    const auto stats = tevractl({"stats", "--json"});
    ASSERT_EQ(stats.exitCode, 0) << stats.err;
    EXPECT_EQ(nlohmann::json::parse(stats.out)["totalDictations"], 1);
}

TEST_F(TevractlTest, AFailedDictationKeepsTheAudio) {
    speechStatus = 500;
    const auto run = tevractl({"dictate", writeSpeech()});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_THAT(run.err, HasSubstr("all STT backends failed: kestrum: HTTP 500"));
    const std::filesystem::directory_iterator failed(dataDir() / "failed");
    ASSERT_NE(failed, std::filesystem::directory_iterator());
    const auto kept = failed->path();
    EXPECT_EQ(std::next(failed), std::filesystem::directory_iterator());
    EXPECT_THAT(kept.filename().string(), StartsWith("dictation-"));
    EXPECT_THAT(run.err, HasSubstr(kept.string()));
    EXPECT_EQ(testing::readFile(kept), speechBytes);
}

TEST_F(TevractlTest, WrongInputIsRefusedWithExitStatusTwo) {
    std::ofstream(home / "notes.txt") << "not audio";
    const auto notWav = tevractl({"dictate", (home / "notes.txt").string()});
    EXPECT_EQ(notWav.exitCode, 2);
    EXPECT_THAT(notWav.err, HasSubstr("not a WAV file"));

    const auto silentSlot = tevractl({"dictate", writeSpeech(), "--mode", "9"});
    EXPECT_EQ(silentSlot.exitCode, 2);
    EXPECT_THAT(silentSlot.err, HasSubstr("no enabled voice in slot 9"));

    EXPECT_EQ(tevractl({"history", "--limit", "many"}).exitCode, 2);
    EXPECT_EQ(tevractl({"frobnicate"}).exitCode, 2);
    const auto help = tevractl({"dictate", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, StartsWith("usage: tevractl dictate"));
}

TEST_F(TevractlTest, TranslatesAndReportsKeys) {
    const auto translated = tevractl({"translate", "dzień dobry", "--to", "en"});
    ASSERT_EQ(translated.exitCode, 0) << translated.err;
    EXPECT_EQ(translated.out, "Hello from the command line!\n");

    const auto blank = tevractl({"translate", "   "});
    EXPECT_EQ(blank.exitCode, 1);
    EXPECT_EQ(blank.err, "transcription came back empty\n");

    const auto keys = tevractl({"keys"}, {{"GROQ_API_KEY", "gsk"}});
    EXPECT_EQ(keys.exitCode, 0);
    EXPECT_THAT(keys.out,
                StartsWith("fireworks: \u2013  deepinfra: \u2013  groq: \u2713  openai: \u2013\n"));
}

}  // namespace
}  // namespace tevra
