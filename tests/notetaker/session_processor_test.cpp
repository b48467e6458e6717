// Processing a recorded session end to end: the real speech and chat clients
// against loopback services, and a real store.
#include "notetaker/session_processor.h"

#include <gtest/gtest.h>

#include <mutex>
#include <nlohmann/json.hpp>

#include "polish/llm_polisher.h"
#include "store/history_store.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using nlohmann::json;

constexpr double kStart = 1783252980;  // 5 July 2026, 12:03 UTC
constexpr size_t kWindow = 25 * 16000;

// A stream of 25-second windows, each at one steady level; the speech service
// below hears a window's level as its words.
std::vector<int16_t> windows(std::initializer_list<int16_t> levels) {
    std::vector<int16_t> samples;
    for (const int16_t level : levels) {
        samples.insert(samples.end(), kWindow, level);
    }
    return samples;
}

class SessionProcessing : public ::testing::Test {
protected:
    void SetUp() override {
        server_.server().Post(
            "/speech/v1/audio/transcriptions",
            [this](const httplib::Request&, httplib::Response& res,
                   const httplib::ContentReader& reader) {
                int level = 0;
                for (const auto& part : testing::readMultipart(reader)) {
                    if (part.name == "file" && part.content.size() > 45) {
                        level = static_cast<int16_t>(static_cast<uint8_t>(part.content[44]) |
                                                     static_cast<uint8_t>(part.content[45]) << 8);
                    }
                }
                std::lock_guard lock(mutex_);
                heard_.push_back(level);
                res.status = level == 1500 ? 500 : 200;
                res.set_content(json{{"text", " level " + std::to_string(level) + " "}}.dump(),
                                "application/json");
            });
        server_.server().Post("/chat/v1/chat/completions", [this](const httplib::Request& req,
                                                                  httplib::Response& res) {
            std::lock_guard lock(mutex_);
            chatUsers_.push_back(json::parse(req.body)["messages"][1]["content"]);
            res.status = chatStatus_;
            res.set_content(json{{"choices", {{{"message", {{"content", R"({"items":[
                                          {"kind":"task","title":"Send the report",
                                           "owner":"them","confidence":0.9}]})"}}}}}}}
                                .dump(),
                            "application/json");
        });
        server_.start();
    }

    SessionServices services(bool withStore = true) {
        return {std::make_shared<TranscriptionRouter>(
                    std::vector<std::shared_ptr<const TranscriptionBackend>>{
                        WhisperAPITranscriber::kestrum(server_.baseURL() + "/speech/v1", "t",
                                                       "whisper")}),
                "en",
                {std::make_shared<LLMPolisher>("chat", server_.baseURL() + "/chat/v1", "k", "m")},
                withStore ? store : nullptr};
    }
    SessionProcessor processor(bool withStore = true) {
        return SessionProcessor(services(withStore), [] { return kStart + 3600; });
    }

    std::vector<int> heard() {
        std::lock_guard lock(mutex_);
        return heard_;
    }
    std::vector<std::string> chatUsers() {
        std::lock_guard lock(mutex_);
        return chatUsers_;
    }
    void failChat() {
        std::lock_guard lock(mutex_);
        chatStatus_ = 500;
    }

    testing::TempDir dir;
    std::shared_ptr<HistoryStore> store =
        std::make_shared<HistoryStore>((dir / "weft.sqlite").string());

private:
    testing::LoopbackServer server_;
    std::mutex mutex_;
    std::vector<int> heard_;
    std::vector<std::string> chatUsers_;
    int chatStatus_ = 200;
};

TEST_F(SessionProcessing, WindowsGoOneByOneMicrophoneFirstAndTheSessionIsSaved) {
    // The microphone: speech, silence, speech that no service transcribes, a
    // short tail; the other side: two windows of speech.
    std::vector<int16_t> mic = windows({1000, 100, 1500});
    mic.insert(mic.end(), 16000, 1200);
    const std::vector<int16_t> system = windows({2000, 2100});
    std::vector<std::pair<size_t, size_t>> progress;
    const auto result =
        processor().process("Zoom", kStart, mic, system, [&](const SessionProgress& p) {
            progress.push_back(
                {p.stage == SessionProgress::Stage::extracting ? 99 : p.done, p.total});
        });

    EXPECT_EQ(heard(), (std::vector<int>{1000, 1500, 1200, 2000, 2100}))
        << "silence costs no request";
    EXPECT_EQ(progress, (std::vector<std::pair<size_t, size_t>>{
                            {0, 5}, {1, 5}, {2, 5}, {3, 5}, {4, 5}, {99, 5}}));
    EXPECT_EQ(result.failedWindows, 1u);
    EXPECT_EQ(result.lastWindowFailure, "all STT backends failed: kestrum: HTTP 500");
    EXPECT_FALSE(result.extractionFailure);

    const std::vector<TranscriptLine> lines = {{0, Speaker::me, "level 1000"},
                                               {0, Speaker::them, "level 2000"},
                                               {25, Speaker::them, "level 2100"},
                                               {75, Speaker::me, "level 1200"}};
    EXPECT_EQ(chatUsers(), (std::vector<std::string>{"Me: level 1000\nThem: level 2000\n"
                                                     "Them: level 2100\nMe: level 1200"}));
    ASSERT_TRUE(result.id);
    const auto saved = store->session(*result.id);
    ASSERT_TRUE(saved);
    EXPECT_EQ(*saved, result.session);
    EXPECT_EQ(saved->transcript, lines);
    EXPECT_EQ(saved->appName, "Zoom");
    EXPECT_EQ(saved->startedAt, kStart);
    EXPECT_EQ(saved->endedAt, kStart + 3600);
    EXPECT_EQ(saved->title, NoteSession::deriveTitle("Zoom", kStart, lines));
    ASSERT_EQ(saved->items.size(), 1u);
    EXPECT_EQ(saved->items[0].owner, Speaker::them);
}

TEST_F(SessionProcessing, SilenceAndFailuresStillLeaveASessionButNoStoreLosesIt) {
    const auto silent = processor().process(
        "unknown", kStart, windows({0, 119}), {},
        [](const SessionProgress&) { ADD_FAILURE() << "nothing to send, nothing to report"; });
    EXPECT_TRUE(heard().empty());
    EXPECT_TRUE(chatUsers().empty()) << "an empty transcript asks no model";
    ASSERT_TRUE(silent.id);
    EXPECT_TRUE(store->session(*silent.id)->transcript.empty());
    EXPECT_EQ(silent.session.title, NoteSession::deriveTitle("unknown", kStart, {}));

    failChat();
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
