// The notetaker's records: their JSON forms, their titles, and the sessions
// table of the store.
#include <gtest/gtest.h>

#include "store/history_store.h"
#include "store/raw_database.h"
#include "store/session_json.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::RawDatabase;

// 5 July 2026, 14:03:20 in Warsaw (UTC+2).
constexpr double kJuly5 = 1783252980 + 20;

const CaptureItem kFullItem{.kind = CaptureKind::event,
                            .title = "Concert",
                            .detail = "two tickets",
                            .whenText = "5 July",
                            .dueISO = "2026-07-05",
                            .dueTime = "19:30",
                            .speaker = Speaker::them,
                            .owner = Speaker::unknown,
                            .confidence = 0.9,
                            .evidence = "that concert on the 5th of July"};

NoteSession sampleSession() {
    return {.id = 7,
            .startedAt = kJuly5,
            .endedAt = kJuly5 + 600.5,
            .appName = "Zoom",
            .title = "Zoom \u00b7 5 Jul, 14:03",
            .transcript = {{0, Speaker::me, "Hello there"}, {25, Speaker::them, "Hi, zażółć"}},
            .items = {kFullItem, CaptureItem{.title = "Call the bank", .confidence = 0.6}}};
}

TEST(SessionJSON, RecordsRoundTripAndAbsentOptionalsAreLeftOut) {
    const NoteSession session = sampleSession();
    EXPECT_EQ(SessionJSON::decodeSession(SessionJSON::encodeSession(session)), session);
    NoteSession open = session;
    open.endedAt.reset();
    EXPECT_EQ(SessionJSON::decodeSession(SessionJSON::encodeSession(open, 2)), open);

    EXPECT_EQ(SessionJSON::encodeItems({CaptureItem{.kind = CaptureKind::task,
                                                    .title = "Pay rent",
                                                    .speaker = Speaker::me,
                                                    .owner = Speaker::them,
                                                    .confidence = 0.5}}),
              R"([{"kind":"task","title":"Pay rent","speaker":"me","owner":"them",)"
              R"("confidence":0.5,"evidence":""}])");
    EXPECT_EQ(SessionJSON::encodeTranscript({{2.5, Speaker::unknown, "x"}}),
              R"([{"ts":2.5,"speaker":"unknown","text":"x"}])");
    EXPECT_EQ(SessionJSON::toJSON(open).dump().find("endedAt"), std::string::npos);
    EXPECT_THROW(SessionJSON::encodeTranscript({{0, Speaker::me, "bad \xff byte"}}),
                 SessionJSON::EncodingError);
}

TEST(SessionJSON, DecodingIsStrictButNullStandsForAnAbsentOptional) {
    const std::string item =
        R"("title":"T","speaker":"me","owner":"them","confidence":1,"evidence":"")";
    const struct {
        std::string json;
        bool decodes;
    } cases[] = {
        {R"([{"kind":"note",)" + item + "}]", true},
        {R"([{"kind":"note","detail":null,"dueISO":null,"extra":[1],)" + item + "}]", true},
        {R"([{"kind":"reminder",)" + item + "}]", false},  // and with it the whole array
        {R"([{"kind":"note",)" + item + R"(},{"kind":"Task",)" + item + "}]", false},
        {R"([{"kind":"note","detail":3,)" + item + "}]", false},
        {R"([{"kind":"note","title":"T","speaker":"me","owner":"them","confidence":1}])", false},
        {R"([{"kind":"note","title":"T","speaker":"me","owner":"boss","confidence":1,)"
         R"("evidence":""}])",
         false},
        {R"([{"kind":"note","title":"T","speaker":"me","owner":"me","confidence":"high",)"
         R"("evidence":""}])",
         false},
        {R"({"kind":"note"})", false},
        {"[1]", false},
        {"not json", false},
    };
    for (const auto& c : cases) {
        bool decoded = true;
        try {
            const auto items = SessionJSON::decodeItems(c.json);
            if (c.decodes) {
                EXPECT_FALSE(items.at(0).detail) << c.json;
            }
        } catch (const DecodingError&) {
            decoded = false;
        }
        EXPECT_EQ(decoded, c.decodes) << c.json;
    }

    const std::string lines[] = {
        R"([{"ts":"0","speaker":"me","text":"x"}])",
        R"([{"ts":0,"speaker":"you","text":"x"}])",
        R"([{"ts":0,"speaker":"me"}])",
    };
    for (const auto& json : lines) {
        EXPECT_THROW(SessionJSON::decodeTranscript(json), DecodingError) << json;
    }
    const std::string sessions[] = {
        R"({"id":1.5,"startedAt":0,"appName":"","title":"","transcript":[],"items":[]})",
        R"({"id":1,"startedAt":0,"appName":"","title":"","transcript":[]})",
        R"({"id":1,"startedAt":0,"endedAt":"late","appName":"","title":"","transcript":[],)"
        R"("items":[]})",
    };
    for (const auto& json : sessions) {
        EXPECT_THROW(SessionJSON::decodeSession(json), DecodingError) << json;
    }
    EXPECT_FALSE(SessionJSON::decodeSession(R"({"id":1,"startedAt":0,"endedAt":null,)"
                                            R"("appName":"","title":"","transcript":[],)"
                                            R"("items":[]})")
                     .endedAt);
}

TEST(NoteSessionTitle, NamesTheApplicationOrTheFirstLongLineOrTheCall) {
    const std::vector<TranscriptLine> lines = {
        {0, Speaker::me, "Hi there you"},
        {5, Speaker::them,
         "  So  let us   talk about the launch plan for the autumn and "
         "everything that goes with it\n"},
    };
    const struct {
        std::string app;
        std::vector<TranscriptLine> transcript;
        std::string title;
    } cases[] = {
        {"Zoom", lines, "Zoom \u00b7 5 Jul, 14:03"},
        {" Teams\n", {}, "Teams \u00b7 5 Jul, 14:03"},
        {"  ", lines, "So  let us   talk about the launch plan for the autumn and e"},
        {"UNKNOWN", lines, "So  let us   talk about the launch plan for the autumn and e"},
        {"unknown", {lines[0]}, "Call \u00b7 5 Jul, 14:03"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(NoteSession::deriveTitle(c.app, kJuly5, c.transcript, "Europe/Warsaw"), c.title)
            << c.app;
    }
    // Two-digit hours, a day without a leading zero.
    EXPECT_EQ(NoteSession::deriveTitle("Zoom", kJuly5 - 4 * 86400 - 6 * 3600, {}, "Europe/Warsaw"),
              "Zoom \u00b7 1 Jul, 08:03");
}

class SessionStoreTest : public ::testing::Test {
protected:
    testing::TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    HistoryStore store{path};
};

TEST_F(SessionStoreTest, SessionsComeBackWholeNewestFirstAndGoWhenDeleted) {
    NoteSession older = sampleSession();
    older.startedAt -= 3600;
    older.endedAt.reset();
    const int64_t olderId = store.saveSession(older);
    const int64_t newerId = store.saveSession(sampleSession());
    EXPECT_EQ(olderId, 1);
    EXPECT_EQ(newerId, 2) << "the id given is ignored";
    EXPECT_EQ(RawDatabase(path).value("SELECT ended_at IS NULL FROM sessions WHERE id=1"), "1");

    const auto recent = store.recentSessions(10);
    ASSERT_EQ(recent.size(), 2u);
    NoteSession expected = sampleSession();
    expected.id = newerId;
    EXPECT_EQ(recent[0], expected);
    older.id = olderId;
    EXPECT_EQ(recent[1], older);
    EXPECT_EQ(store.session(newerId), expected);
    EXPECT_TRUE(store.recentSessions(-1).empty());

    store.deleteSession(newerId);
    EXPECT_FALSE(store.session(newerId));
    EXPECT_EQ(store.recentSessions(10).size(), 1u);

    NoteSession unsavable = sampleSession();
    unsavable.items[0].title = "\xc3";
    EXPECT_EQ(store.saveSession(unsavable), 0);
    EXPECT_EQ(store.recentSessions(10).size(), 1u);
}

TEST_F(SessionStoreTest, TheTwoThousandAndFirstSessionEvictsTheEarliestStart) {
    RawDatabase(path).exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 2000) "
        "INSERT INTO sessions(started_at,app_name,title,transcript_json,items_json) "
        "SELECT 1000 + i, 'Zoom', 'call ' || i, '[]', '[]' FROM n");
    const int64_t id = store.saveSession(NoteSession{.startedAt = 5000, .appName = "Slack"});
    EXPECT_EQ(id, 2001);
    EXPECT_EQ(RawDatabase(path).value("SELECT COUNT(*) FROM sessions"), "2000");
    EXPECT_EQ(RawDatabase(path).value("SELECT MIN(started_at) FROM sessions"), "1002.0");

    // A session that starts before all the others is saved and pruned at once.
    EXPECT_EQ(store.saveSession(NoteSession{.startedAt = 1}), 2002);
    EXPECT_FALSE(store.session(2002));
    EXPECT_EQ(store.recentSessions(1).at(0).appName, "Slack");
}

TEST_F(SessionStoreTest, ADamagedColumnReadsAsAnEmptyArrayAndNullsAsEmptyText) {
    store.saveSession(sampleSession());
    RawDatabase raw(path);
    raw.exec("UPDATE sessions SET items_json = '[{\"kind\":\"reminder\"}]'");
    raw.exec("INSERT INTO sessions(started_at) VALUES(1)");
    const auto sessions = store.recentSessions(10);
    ASSERT_EQ(sessions.size(), 2u);
    EXPECT_EQ(sessions[0].transcript, sampleSession().transcript);
    EXPECT_TRUE(sessions[0].items.empty());
    EXPECT_EQ(sessions[0].title, sampleSession().title);
    EXPECT_EQ(sessions[1].appName, "");
    EXPECT_TRUE(sessions[1].transcript.empty());
    EXPECT_FALSE(sessions[1].endedAt);
}

}  // namespace
}  // namespace tevra
