// tevractl end to end: the real program, a fresh data directory, and loopback
// speech and chat services reached through the relay setting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

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
            "/v1/chat/completions", [this](const httplib::Request& req, httplib::Response& res) {
                std::lock_guard lock(chatMutex);
                chatRequest = nlohmann::json::parse(req.body, nullptr, false);
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
    std::mutex chatMutex;
    nlohmann::json chatRequest;
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
    EXPECT_EQ(rows[0].polishBackend, "mode:Dictate");
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

    // A header whose sample rate no WAV file of ours can carry.
    const std::string speech = writeSpeech();
    std::string tooFast = speechBytes;
    tooFast.replace(24, 4, std::string("\0\0\0\x80", 4));
    std::ofstream(home / "fast.wav", std::ios::binary) << tooFast;

    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"dictate", speech, "--mode", "9"}, "no enabled voice in slot 9"},
        {{"dictate", (home / "fast.wav").string()}, "sample rate of 2147483648 Hz is too high"},
        {{"history", "--limit", "many"}, "--limit takes a whole number"},
        {{"history", "--jsn"}, "unknown option --jsn"},
        {{"translate", "a", "b"}, "give the text to translate as one argument"},
        {{"frobnicate"}, "unknown command"},
    };
    for (const auto& [args, error] : cases) {
        const auto run = tevractl(args);
        EXPECT_EQ(run.exitCode, 2) << args[0];
        EXPECT_THAT(run.err, HasSubstr(error));
    }
    const auto help = tevractl({"dictate", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, StartsWith("usage: tevractl dictate"));
}

TEST_F(TevractlTest, TranslatesAndReportsKeys) {
    const auto translated = tevractl({"translate", "dzień dobry", "--to", "en"});
    ASSERT_EQ(translated.exitCode, 0) << translated.err;
    EXPECT_EQ(translated.out, "Hello from the command line!\n");

    // A text that begins with a dash is text; after "--" anything is.
    for (const auto& [args, text] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"translate", "-5 °C today", "--to", "de"}, "-5 °C today"},
             {{"translate", "--to", "de", "--", "--help"}, "--help"},
             {{"translate", "--to=de", "-3"}, "-3"}}) {
        const auto run = tevractl(args);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        std::lock_guard lock(chatMutex);
        EXPECT_THAT(chatRequest["messages"][1]["content"].get<std::string>(), HasSubstr(text));
        EXPECT_THAT(chatRequest["messages"][0]["content"].get<std::string>(), HasSubstr("German"));
    }

    const auto blank = tevractl({"translate", "   "});
    EXPECT_EQ(blank.exitCode, 1);
    EXPECT_EQ(blank.err, "transcription came back empty\n");

    const auto keys = tevractl({"keys"}, {{"GROQ_API_KEY", "gsk"}});
    EXPECT_EQ(keys.exitCode, 0);
    EXPECT_THAT(keys.out,
                StartsWith("fireworks: \u2013  deepinfra: \u2013  groq: \u2713  openai: \u2013\n"));
}

TEST_F(TevractlTest, AHistoryThatCannotBeOpenedIsAnErrorInEveryForm) {
    std::filesystem::create_directories(dataDir() / "weft.sqlite" / "inside");
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"history"}, {"history", "--json"}, {"stats"}, {"stats", "--json"}}) {
        const auto run = tevractl(args);
        EXPECT_EQ(run.exitCode, 1) << args.size();
        EXPECT_EQ(run.out, "");
        EXPECT_THAT(run.err, ::testing::EndsWith("tevractl " + args[0] +
                                                 ": the history database could not be opened\n"));
    }
}

TEST_F(TevractlTest, ADamagedHistoryIsMovedAsideAndSaysWhere) {
    std::ofstream(dataDir() / "weft.sqlite") << std::string(2048, '#');
    const auto run = tevractl({"history", "--json"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "[]\n");
    const std::regex said(
        "tevractl: the history database was damaged \\(not a database\\); it was "
        "moved to (.*weft\\.sqlite\\.damaged-[^ ]+) and a fresh one started\\.\n");
    std::smatch where;
    ASSERT_TRUE(std::regex_match(run.err, where, said)) << run.err;
    EXPECT_EQ(testing::readFile(where[1].str()), std::string(2048, '#'));
    EXPECT_THAT(testing::readFile(dataDir() / "tevra.log"), HasSubstr(where[1].str()));
}

// The release tool's key and feed, judged by `tevractl update verify` exactly
// as Tevra judges a fetched feed.
TEST_F(TevractlTest, AFeedSignedByTheReleaseToolVerifiesAndATamperedOneDoesNot) {
    const std::string tool = std::string(TEVRA_TESTS_DIR) + "/../scripts/sign-appcast";
    const std::string key = (home / "feed.pem").string();
    const auto made = testing::runProcess({tool, "--keygen", key});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const std::string publicKey = made.out.substr(0, made.out.find('\n'));
    EXPECT_EQ(testing::modeOf(key), 0600u);
    const std::string feed = (home / "appcast.json").string();
    const auto signedFeed = testing::runProcess({tool, "--key", key, "--version", "2.0.0", "--url",
                                                 "https://dl.example.org/tevra-2.0.0.tar.gz",
                                                 "--notes", "Faster.", "--output", feed});
    ASSERT_EQ(signedFeed.exitCode, 0) << signedFeed.err;

    struct Case {
        std::vector<std::string> args;
        int status;
        std::string out;
    };
    const std::vector<Case> cases = {
        {{"verify", feed, "--public-key", publicKey, "--current-version", "1.0"},
         0,
         "update available: 2.0.0 https://dl.example.org/tevra-2.0.0.tar.gz\n"},
        {{"verify", feed, "--public-key", publicKey, "--current-version", "2.0.0"},
         0,
         "up to date\n"},
        {{"verify", feed},
         1,
         "rejected: appcast signature invalid \u2014 refusing (possible tampering)\n"},
        {{"check", "--feed", "http://dl.example.org/appcast.json"},
         1,
         "rejected: appcast URL not https\n"},
        {{"verify"}, 2, ""},
        {{"verify", (home / "none.json").string()}, 2, ""},
        {{"sign"}, 2, ""},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args = c.args;
        args.insert(args.begin(), "update");
        const auto run = tevractl(args);
        EXPECT_EQ(run.exitCode, c.status) << c.args[0] << " " << run.err;
        EXPECT_EQ(run.out, c.out) << c.args[0];
    }

    std::string text = testing::readFile(feed);
    text.replace(text.find("2.0.0"), 5, "2.0.1");
    std::ofstream(feed) << text;
    const auto tampered = tevractl({"update", "verify", feed, "--public-key", publicKey});
    EXPECT_EQ(tampered.exitCode, 1);
    EXPECT_THAT(tampered.out, HasSubstr("possible tampering"));
}

}  // namespace
}  // namespace tevra
