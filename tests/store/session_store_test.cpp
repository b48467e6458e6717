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

constexpr double kJuly5 = 1783252980 + 20;  // 5 July 2026, 14:03:20 in Warsaw

NoteSession sampleSession() {
    const CaptureItem full{
        CaptureKind::event, "Concert",        "two tickets", "5 July",      "2026-07-05", "19:30",
        Speaker::them,      Speaker::unknown, 0.9,           "that concert"};
    return {7,
            kJuly5,
            kJuly5 + 600.5,
            "Zoom",
            "Zoom \u00b7 5 Jul, 14:03",
            {{0, Speaker::me, "Hello there"}, {25, Speaker::them, "Hi, zażółć"}},
            {full, CaptureItem{.title = "Call the bank", .confidence = 0.6}}};
}

TEST(SessionJSON, RecordsRoundTripAndAbsentOptionalsAreLeftOut) {
    NoteSession session = sampleSession();
    EXPECT_EQ(SessionJSON::decodeSession(SessionJSON::encodeSession(session)), session);
    session.endedAt.reset();
    EXPECT_EQ(SessionJSON::decodeSession(SessionJSON::encodeSession(session, 2)), session);
    EXPECT_EQ(SessionJSON::toJSON(session).dump().find("endedAt"), std::string::npos);
    EXPECT_EQ(SessionJSON::encodeItems({{.title = "Pay", .owner = Speaker::them}}),
              R"([{"kind":"note","title":"Pay","speaker":"unknown","owner":"them",)"
              R"("confidence":0.0,"evidence":""}])");
    EXPECT_THROW(SessionJSON::encodeTranscript({{0, Speaker::me, "bad \xff byte"}}),
                 SessionJSON::EncodingError);
}

void items(std::string_view json) {
    SessionJSON::decodeItems(json);
}
void lines(std::string_view json) {
    SessionJSON::decodeTranscript(json);
}
void session(std::string_view json) {
    SessionJSON::decodeSession(json);
}

TEST(SessionJSON, DecodingIsStrictButNullStandsForAnAbsentOptional) {
    const std::string item = R"("title":"T","speaker":"me","owner":"them","confidence":1,)";
    const std::string head = R"({"id":1,"startedAt":0,"appName":"","title":"",)";
    const struct {
        void (*decode)(std::string_view);
        std::string json;
        bool decodes;
    } cases[] = {
        {items, R"([{"kind":"note","detail":null,"x":[1],)" + item + R"("evidence":""}])", true},
        {items, R"([{"kind":"reminder",)" + item + R"("evidence":""}])", false},
        {items, R"([{"kind":"Task",)" + item + R"("evidence":""}])", false},
        {items, R"([{"kind":"note","detail":3,)" + item + R"("evidence":""}])", false},
        {items, R"([{"kind":"note",)" + item + "}]", false},
        {items, R"([{"kind":"note",)" + item + R"("evidence":""},1])", false},
        {items, "not json", false},
        {lines, R"([{"ts":"0","speaker":"me","text":"x"}])", false},
        {lines, R"([{"ts":0,"speaker":"you","text":"x"}])", false},
        {session, head + R"("endedAt":null,"transcript":[],"items":[]})", true},
        {session, head + R"("endedAt":"late","transcript":[],"items":[]})", false},
        {session, head + R"("transcript":[]})", false},
        {session,
         R"({"id":1.5,"startedAt":0,"appName":"","title":"","transcript":[],)"
         R"("items":[]})",
         false},
    };
    for (const auto& c : cases) {
        bool decoded = true;
        try {
            c.decode(c.json);
        } catch (const DecodingError&) {
            decoded = false;
        }
        EXPECT_EQ(decoded, c.decodes) << c.json;
    }
    EXPECT_FALSE(SessionJSON::decodeItems(cases[0].json).at(0).detail);
}

TEST(NoteSessionTitle, NamesTheApplicationOrTheFirstLongLineOrTheCall) {
    const std::vector<TranscriptLine> transcript = {
        {0, Speaker::me, "Hi there you"},
        {5, Speaker::them,
         "  So  let us   talk about the plan for the autumn and all that it "
         "brings with it\n"},
    };
    const std::string firstLong = "So  let us   talk about the plan for the autumn and all that";
    const struct {
        std::string app;
        std::vector<TranscriptLine> transcript;
        std::string title;
    } cases[] = {
        {"Zoom", transcript, "Zoom \u00b7 5 Jul, 14:03"},
        {" Teams\n", {}, "Teams \u00b7 5 Jul, 14:03"},
        {"  ", transcript, firstLong},
        {"UNKNOWN", transcript, firstLong},
        {"unknown", {transcript[0]}, "Call \u00b7 5 Jul, 14:03"},
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
    older.id = store.saveSession(older);
    NoteSession newer = sampleSession();
    newer.id = store.saveSession(newer);
    EXPECT_EQ(newer.id, 2) << "the id given is ignored";
    EXPECT_EQ(RawDatabase(path).value("SELECT ended_at IS NULL FROM sessions WHERE id=1"), "1");
    EXPECT_EQ(store.recentSessions(10), (std::vector<NoteSession>{newer, older}));
    EXPECT_EQ(store.session(2), newer);
    EXPECT_TRUE(store.recentSessions(-1).empty());

    store.deleteSession(2);
    EXPECT_FALSE(store.session(2));
    newer.items[0].title = "\xc3";  // not UTF-8: nothing is written
    EXPECT_EQ(store.saveSession(newer), 0);
    EXPECT_EQ(store.recentSessions(10).size(), 1u);
}

TEST_F(SessionStoreTest, TheTwoThousandAndFirstSessionEvictsTheEarliestStart) {
    RawDatabase(path).exec(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 2000) "
        "INSERT INTO sessions(started_at,app_name,title,transcript_json,items_json) "
        "SELECT 1000 + i, 'Zoom', 'call ' || i, '[]', '[]' FROM n");
    EXPECT_EQ(store.saveSession(NoteSession{.startedAt = 5000, .appName = "Slack"}), 2001);
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
    EXPECT_EQ(sessions[1], (NoteSession{.id = 2, .startedAt = 1}));
}

}  // namespace
}  // namespace tevra
