// tevractl notes end to end: the real program turns two recordings into a
// session through loopback speech and chat services, then shows, lists and
// deletes it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "store/session_json.h"
#include "stt/wav.h"
#include "support/loopback_services.h"
#include "support/speech_samples.h"
#include "support/subprocess.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

const char* const kItems = R"({"items":[
  {"kind":"task","title":"Send the report","owner":"them","confidence":0.9,
   "evidence":"I will send the report"},
  {"kind":"event","title":"Review","due":"2026-07-10","time":"09:30","confidence":0.8},
  {"kind":"note","title":"Budget is fine","detail":"for Q3","confidence":0.7}]})";

// The session lasts its 50 s of audio and the moment its processing took, so
// "50s" may come out as "51s" on a busy machine.
std::string steady(const std::string& text) {
    return std::regex_replace(text, std::regex(R"(\b5\ds\b)"), "50s");
}

class NotesCommand : public ::testing::Test {
protected:
    void SetUp() override {
        services.speech([this](std::string_view) {
            return testing::LoopbackServices::Reply{
                200, heard++ == 0 ? R"({"text":"I will send the report"})"
                                  : R"({"text":"Thanks, talk soon"})"};
        });
        services.chat("relay", 200, kItems);
        std::filesystem::create_directories(dataDir());
        std::ofstream(dataDir() / "settings.json")
            << nlohmann::json{{"proxyBaseURL", services.root("relay")}}.dump();
    }

    std::filesystem::path dataDir() const { return home / "data" / "Tevra"; }

    testing::ProcessResult tevractl(std::vector<std::string> args) {
        args.insert(args.begin(), {TEVRACTL_PATH, "notes"});
        std::map<std::string, std::optional<std::string>> env = {
            {"XDG_DATA_HOME", (home / "data").string()},
            {"HOME", home.path().string()},
            {"TEVRA_PROXY_TOKEN", "relay-token"},
            {"TZ", "Europe/Warsaw"},
            {"LC_ALL", "en_GB.UTF-8"},
            {"GROQ_API_KEY", std::nullopt},
            {"OPENAI_API_KEY", std::nullopt},
            {"DEEPINFRA_API_KEY", std::nullopt},
            {"FIREWORKS_API_KEY", std::nullopt}};
        return testing::runProcess(args, env);
    }

    // A sentence said five times, then silence up to the given length.
    std::string writeSpeech(const std::string& name, const std::string& sentence, int rate,
                            int seconds) {
        const auto said = testing::spokenSamples(sentence, rate, 1);
        std::vector<int16_t> samples;
        for (int i = 0; i < 5; ++i) {
            samples.insert(samples.end(), said.begin(), said.end());
        }
        samples.resize(static_cast<size_t>(rate) * seconds);
        std::ofstream(home / name, std::ios::binary) << std::string_view(WAV::data(samples, rate));
        return (home / name).string();
    }

    testing::TempDir home;
    testing::LoopbackServices services;
    std::atomic<int> heard{0};
};

TEST_F(NotesCommand, TwoRecordingsBecomeASessionThatIsShownListedAndDeleted) {
    // Speech in the microphone's first window only, and in the other side's one window.
    const auto processed =
        tevractl({"process", "--mic", writeSpeech("me.wav", "I will send the report", 48000, 50),
                  "--system", writeSpeech("them.wav", "Thanks, talk soon", 22050, 10), "--app",
                  "Zoom", "--started", "2026-07-05T14:03:00+02:00"});
    ASSERT_EQ(processed.exitCode, 0) << processed.err;
    EXPECT_EQ(heard, 2) << "the silent second window of the microphone is not sent";
    EXPECT_EQ(processed.err, "");
    EXPECT_THAT(steady(processed.out),
                StartsWith("Zoom \u00b7 5 Jul, 14:03\n50s \u00b7 3 items\n\n"
                           "Tasks\n"
                           "  \u2610 Send the report  (waiting on them)\n"
                           "    \u201cI will send the report\u201d\n\n"
                           "Events\n"
                           "  \u25b8 Review \u2014 Fri 10 Jul \u00b7 09:30\n\n"
                           "Notes\n"
                           "  \u2022 Budget is fine\n"
                           "    for Q3\n\n"))
        << processed.out;
    const std::string transcript =
        "You  00:00  I will send the report\n"
        "Them  00:00  Thanks, talk soon";
    EXPECT_THAT(processed.out, EndsWith("Transcript\n" + transcript + "\n\nsaved as session 1\n"));

    const auto shown = tevractl({"show", "1"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_EQ(shown.out + "\nsaved as session 1\n", processed.out);
    EXPECT_EQ(tevractl({"show", "1", "--transcript"}).out, transcript);
    const auto json = tevractl({"show", "1", "--json"});
    const NoteSession session = SessionJSON::decodeSession(json.out);
    EXPECT_EQ(session.id, 1);
    EXPECT_EQ(session.startedAt, 1783252980);
    EXPECT_EQ(SessionJSON::decodeSession(
                  nlohmann::json::parse(tevractl({"list", "--json"}).out).at(0).dump()),
              session);
    const std::string line = steady(tevractl({"list"}).out);
    EXPECT_THAT(line, StartsWith("1  Zoom \u00b7 5 Jul, 14:03  "));
    EXPECT_THAT(line, EndsWith(" ago  50s  1 task \u00b7 1 event \u00b7 1 note\n"));

    EXPECT_EQ(tevractl({"delete", "1"}).exitCode, 0);
    const auto gone = tevractl({"show", "1"});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_EQ(gone.err, "tevractl notes show: no session 1\n");
    EXPECT_EQ(tevractl({"list"}).out, "");
}

TEST_F(NotesCommand, FailuresAreToldAndWrongInputIsRefused) {
    services.chat("relay", 500, "");
    const auto unjudged = tevractl({"process", "--mic", writeSpeech("me.wav", "Hello", 16000, 5)});
    EXPECT_EQ(unjudged.exitCode, 1);
    EXPECT_EQ(unjudged.err, "extraction failed: HTTP 500\n");
    EXPECT_THAT(unjudged.out, HasSubstr("No tasks or notes were extracted from this session."));
    EXPECT_THAT(unjudged.out, StartsWith("Notes \u00b7 "));
    EXPECT_THAT(unjudged.out, EndsWith("saved as session 1\n"));

    std::ofstream(home / "notes.txt") << "not audio";
    const auto notWav = tevractl({"process", "--mic", (home / "notes.txt").string()});
    EXPECT_EQ(notWav.exitCode, 2);
    EXPECT_THAT(notWav.err, HasSubstr("not a WAV file"));
    const std::vector<std::string> wrong[] = {
        {"process", "--system", (home / "me.wav").string()},
        {"process", "--mic", (home / "me.wav").string(), "--started", "yesterday"},
        {"show", "first"},
        {"show", "1", "--json", "--transcript"},
        {"list", "--limit", "-3"},
        {"archive", "1"},
    };
    for (const auto& args : wrong) {
        EXPECT_EQ(tevractl(args).exitCode, 2) << args[0] << " " << args[1];
    }
    EXPECT_EQ(heard, 1);

    // No database: the same error and status in both forms.
    std::filesystem::remove_all(dataDir());
    std::ofstream(dataDir()) << "a file where the data directory belongs";
    for (const std::vector<std::string>& args : {std::vector<std::string>{"list"},
                                                 {"list", "--json"},
                                                 {"show", "1", "--json"},
                                                 {"delete", "1"}}) {
        const auto run = tevractl(args);
        EXPECT_EQ(run.exitCode, 1) << args[0];
        EXPECT_THAT(run.err,
                    EndsWith("tevractl notes: the history database could not be opened\n"));
        EXPECT_EQ(run.out, "");
    }
}

}  // namespace
}  // namespace tevra
