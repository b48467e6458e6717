// Processing a recorded session end to end: the real speech and chat clients
// against loopback services, and a real store.
#include "notetaker/session_processor.h"

#include <gtest/gtest.h>

#include "polish/llm_polisher.h"
#include "store/history_store.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_services.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

constexpr double kStart = 1783252980;  // 5 July 2026, 12:03 UTC

// A stream of 25-second windows, each at one steady level.
std::vector<int16_t> windows(std::initializer_list<int16_t> levels) {
    std::vector<int16_t> samples;
    for (const int16_t level : levels) {
        samples.insert(samples.end(), 25 * 16000, level);
    }
    return samples;
}

// The level of a window as the speech service received it.
int levelOf(std::string_view wav) {
    return static_cast<int16_t>(static_cast<uint8_t>(wav.at(44)) | static_cast<uint8_t>(wav.at(45))
                                                                       << 8);
}

class SessionProcessing : public ::testing::Test {
protected:
    void SetUp() override {
        // The speech service hears a window's level as its words; 1500 it cannot transcribe.
        services.speech([](std::string_view wav) {
            const int level = levelOf(wav);
            return testing::LoopbackServices::Reply{
                level == 1500 ? 500 : 200,
                R"({"text":" level )" + std::to_string(level) + R"( "})"};
        });
        services.chat("chat", 200,
                      R"({"items":[{"kind":"task","title":"Send it","owner":"them"}]})");
    }

    SessionProcessor processor(bool withStore = true) {
        SessionServices with{
            std::make_shared<TranscriptionRouter>(
                std::vector<std::shared_ptr<const TranscriptionBackend>>{
                    WhisperAPITranscriber::kestrum(services.root("speech"), "t", "whisper")}),
            "en",
            {std::make_shared<LLMPolisher>("chat", services.root("chat"), "k", "m")},
            withStore ? store : nullptr};
        return SessionProcessor(std::move(with), [] { return kStart + 3600; });
    }

    std::vector<int> heard() {
        std::vector<int> levels;
        for (const auto& wav : services.speechRequests()) {
            levels.push_back(levelOf(wav));
        }
        return levels;
    }

    testing::LoopbackServices services;
    testing::TempDir dir;
    std::shared_ptr<HistoryStore> store =
        std::make_shared<HistoryStore>((dir / "weft.sqlite").string());
};

TEST_F(SessionProcessing, WindowsGoOneByOneMicrophoneFirstAndTheSessionIsSaved) {
    // The microphone: speech, silence, speech that no service transcribes, a
    // short tail; the other side: two windows of speech.
    std::vector<int16_t> mic = windows({1000, 100, 1500});
    mic.insert(mic.end(), 16000, 1200);
    std::vector<std::pair<size_t, size_t>> progress;
    const auto result = processor().process(
        "Zoom", kStart, mic, windows({2000, 2100}), [&](const SessionProgress& p) {
            const bool extracting = p.stage == SessionProgress::Stage::extracting;
            progress.push_back({extracting ? 99 : p.done, p.total});
        });

    EXPECT_EQ(heard(), (std::vector<int>{1000, 1500, 1200, 2000, 2100}))
        << "silence costs no request";
    EXPECT_EQ(progress, (std::vector<std::pair<size_t, size_t>>{
                            {0, 5}, {1, 5}, {2, 5}, {3, 5}, {4, 5}, {99, 5}}));
    EXPECT_EQ(result.failedWindows, 1u);
    EXPECT_EQ(result.lastWindowFailure, "all STT backends failed: kestrum: HTTP 500");

    const std::vector<TranscriptLine> lines = {{0, Speaker::me, "level 1000"},
                                               {0, Speaker::them, "level 2000"},
                                               {25, Speaker::them, "level 2100"},
                                               {75, Speaker::me, "level 1200"}};
    EXPECT_EQ(services.chatRequests().at(0).message(1),
              "Me: level 1000\nThem: level 2000\nThem: level 2100\nMe: level 1200");
    ASSERT_TRUE(result.id);
    const NoteSession expected{*result.id,
                               kStart,
                               kStart + 3600,
                               "Zoom",
                               NoteSession::deriveTitle("Zoom", kStart, lines),
                               lines,
                               {{.kind = CaptureKind::task,
                                 .title = "Send it",
                                 .owner = Speaker::them,
                                 .confidence = 0.7}}};
    EXPECT_EQ(result.session, expected);
    EXPECT_EQ(store->session(*result.id), expected);
}

TEST_F(SessionProcessing, SilenceAndFailuresStillLeaveASessionButNoStoreLosesIt) {
    const auto silent = processor().process(
        "unknown", kStart, windows({0, 119}), {},
        [](const SessionProgress&) { ADD_FAILURE() << "nothing to send, nothing to report"; });
    EXPECT_TRUE(services.speechRequests().empty());
    EXPECT_TRUE(services.chatRequests().empty()) << "an empty transcript asks no model";
    ASSERT_TRUE(silent.id);
    EXPECT_TRUE(store->session(*silent.id)->transcript.empty());

    services.chat("chat", 500, "");
    const auto unjudged = processor().process("Slack", kStart, {}, windows({900}));
    EXPECT_EQ(unjudged.extractionFailure, "extraction failed: HTTP 500");
    ASSERT_TRUE(unjudged.id);
    EXPECT_EQ(store->session(*unjudged.id)->transcript.size(), 1u);
    EXPECT_TRUE(store->session(*unjudged.id)->items.empty());

    const auto lost = processor(/*withStore=*/false).process("Slack", kStart, windows({900}), {});
    EXPECT_FALSE(lost.id);
    EXPECT_EQ(lost.session.transcript.size(), 1u);
    EXPECT_EQ(store->recentSessions(10).size(), 2u);
}

}  // namespace
}  // namespace tevra
