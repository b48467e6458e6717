// The notetaker's pure pieces: windows, transcript, call applications, the
// texts of its pages and the date in its prompt.
#include <gtest/gtest.h>

#include "notetaker/audio_chunker.h"
#include "notetaker/capture_prompt.h"
#include "notetaker/comms_apps.h"
#include "notetaker/notetaker_format.h"
#include "notetaker/transcript_assembly.h"

namespace tevra {
namespace {

TEST(AudioChunker, WindowsDoNotOverlapAndTheLastIsWhatIsLeft) {
    const std::vector<int16_t> minute(60 * 16000);
    const auto windows = AudioChunker::chunks(minute, 16000);
    ASSERT_EQ(windows.size(), 3u);
    EXPECT_EQ(windows[2].startTs, 50.0);
    EXPECT_EQ(windows[2].samples.size(), 10u * 16000);
    EXPECT_EQ(windows[1].samples.data(), minute.data() + 25 * 16000) << "a view, not a copy";

    const std::vector<int16_t> three(3);
    const auto one = AudioChunker::chunks(std::span(three).first(1), 16000, 2.5);
    EXPECT_EQ(one.at(0).startTs, 2.5);
    EXPECT_EQ(one.at(0).samples.size(), 1u);
    EXPECT_EQ(AudioChunker::chunks(three, 16000, 0, 0).size(), 3u) << "0 s: a sample each";
    EXPECT_TRUE(AudioChunker::chunks(three, 0).empty());
    EXPECT_TRUE(AudioChunker::chunks({}, 16000).empty());
}

TEST(TranscriptAssembly, OrdersByStartKeepingInputOrderOnTiesAndDropsBlankChunks) {
    const std::vector<TranscribedChunk> chunks = {
        {Speaker::me, 25, " second me "}, {Speaker::me, 0, "first me"},
        {Speaker::me, 50, " \n\t"},       {Speaker::them, 25, "second them\n"},
        {Speaker::them, 0, "first them"}, {Speaker::unknown, 60, "aside"},
    };
    const std::vector<TranscriptLine> expected = {
        {0, Speaker::me, "first me"},    {0, Speaker::them, "first them"},
        {25, Speaker::me, "second me"},  {25, Speaker::them, "second them"},
        {60, Speaker::unknown, "aside"},
    };
    const auto lines = TranscriptAssembly::assemble(chunks);
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(TranscriptAssembly::flatText(lines),
              "Me: first me\nThem: first them\nMe: second me\nThem: second them\naside");
    EXPECT_TRUE(TranscriptAssembly::assemble({}).empty());
    EXPECT_EQ(TranscriptAssembly::flatText({}), "");
}

TEST(CommsApps, TheWindowInFrontDecidesThenTheDedicatedAppsRunning) {
    using Classes = std::vector<std::string>;
    const struct {
        std::optional<std::string> front;
        Classes running;
        bool micHot;
        std::optional<std::string> app;
    } cases[] = {
        {"zoom", {"slack"}, false, "Zoom"},
        {"Google-chrome", {"zoom"}, false, "Zoom"},
        {"google-chrome", {"zoom"}, true, "Google Meet"},
        {"firefox", {"firefox", "code"}, true, "Google Meet"},
        {"code", {"firefox", "brave-browser"}, true, std::nullopt},
        {std::nullopt, {"code", "discord", "slack"}, false, "Discord"},
        {"code", {"teams-for-linux"}, true, "Teams"},
        {std::nullopt, {}, true, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(CommsApps::activeCallApp(c.front, c.running, c.micHot), c.app)
            << c.front.value_or("-") << " " << c.micHot;
    }
    EXPECT_EQ(CommsApps::displayName("ciscocollabhost", false), "Webex");
    EXPECT_EQ(CommsApps::displayName("chromium", false), std::nullopt);
    EXPECT_EQ(CommsApps::displayName(std::nullopt, true), std::nullopt);
}

TEST(NotetakerFormat, DurationsCountsAndClocks) {
    const struct {
        double seconds;
        const char* text;
    } durations[] = {{59.9, "59s"}, {60, "1 min"},   {3599, "59 min"},
                     {3600, "1h"},  {3660, "1h 1m"}, {-5, "0s"}};
    for (const auto& d : durations) {
        EXPECT_EQ(NotetakerFormat::duration(1000, 1000 + d.seconds), d.text) << d.seconds;
    }
    EXPECT_EQ(NotetakerFormat::duration(1000, std::nullopt), "in progress");

    const CaptureItem task{.kind = CaptureKind::task, .title = "t"};
    const CaptureItem note{.kind = CaptureKind::note, .title = "n"};
    EXPECT_EQ(NotetakerFormat::summary({task, note, note}), "1 task \u00b7 2 notes");
    EXPECT_EQ(NotetakerFormat::summary({}), "Just the transcript");

    NoteSession session{.startedAt = 1783252980, .endedAt = 1783252980 + 754, .appName = "Zoom"};
    session.title = " \n";
    EXPECT_EQ(NotetakerFormat::displayTitle(session), "Zoom session");
    EXPECT_EQ(NotetakerFormat::detailSubtitle(session), "12 min");
    session.items = {task};
    EXPECT_EQ(NotetakerFormat::detailSubtitle(session), "12 min \u00b7 1 item");

    EXPECT_EQ(NotetakerFormat::clock(30, 1783252980), "00:30") << "the smaller is an offset";
    EXPECT_EQ(NotetakerFormat::clock(1783252980 + 4500.7, 1783252980), "75:00");
    EXPECT_EQ(NotetakerFormat::elapsed(1000, 990), "00:00");
    EXPECT_EQ(NotetakerFormat::speakerLabel(Speaker::unknown), "\u2014");

    session.transcript = {{0, Speaker::me, "Hello"}, {25.5, Speaker::them, "Hi"}};
    EXPECT_EQ(NotetakerFormat::transcriptText(session), "You  00:00  Hello\nThem  00:25  Hi");
}

TEST(NotetakerFormat, AnEventShowsItsResolvedDateElseTheWordsItWasSaidIn) {
    const struct {
        std::optional<std::string> due;
        std::optional<std::string> time;
        std::optional<std::string> when;
        std::optional<std::string> shown;
    } cases[] = {
        {"2026-07-04", "19:30", "Saturday", "Sat 4 Jul \u00b7 19:30"},
        {"2026-07-04", std::nullopt, "Saturday", "Sat 4 Jul"},
        {"2026-02-30", "19:30", "end of Feb", "end of Feb"},
        {std::nullopt, std::nullopt, std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        const CaptureItem event{
            .kind = CaptureKind::event, .whenText = c.when, .dueISO = c.due, .dueTime = c.time};
        EXPECT_EQ(NotetakerFormat::eventWhen(event, "en_GB"), c.shown) << c.due.value_or("-");
    }
}

TEST(CapturePrompt, TellsTheModelTodaysDateInTheSessionsTimeZone) {
    // 5 July 2026, 23:30 UTC: already the 6th in Warsaw.
    const std::string prompt = CapturePrompt::system(1783294200, "Europe/Warsaw");
    EXPECT_EQ(prompt.substr(0, 157),
              "You turn a spoken session (a call, a meeting, or someone thinking out loud) into a "
              "SHORT list of things worth keeping. Today is Monday, 6 July 2026.\n\nExtract");
    EXPECT_NE(prompt.find("  \u2022 event \u2014 something tied to a date/time"),
              std::string::npos);
    EXPECT_TRUE(prompt.ends_with("\"evidence\":\"no one to go with \u2026 who to take\"}\n]}"));
    EXPECT_NE(CapturePrompt::system(1783294200, "America/New_York").find("Sunday, 5 July 2026."),
              std::string::npos);
}

}  // namespace
}  // namespace tevra
