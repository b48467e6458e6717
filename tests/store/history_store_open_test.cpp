#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>

#include "store/history_store.h"
#include "store/raw_database.h"
#include "store/store_open_error.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::RawDatabase;
using testing::TempDir;

// sqlite_master keeps each CREATE without its IF NOT EXISTS, and an ADD COLUMN
// appends the column to its table's CREATE TABLE.
const std::vector<std::string> kStoredSchema = {
    "CREATE TABLE history(\n"
    "  id INTEGER PRIMARY KEY AUTOINCREMENT, ts REAL, app TEXT, raw TEXT, polished TEXT,\n"
    "  language TEXT, duration_ms INT, stt_ms INT, polish_ms INT, insert_ms INT,\n"
    "  words INT, stt_backend TEXT, polish_backend TEXT)",
    "CREATE TABLE sqlite_sequence(name,seq)",
    "CREATE INDEX idx_history_ts ON history(ts DESC)",
    "CREATE TABLE dictionary(id INTEGER PRIMARY KEY AUTOINCREMENT, phrase TEXT UNIQUE)",
    "CREATE TABLE replacements(id INTEGER PRIMARY KEY AUTOINCREMENT, from_text TEXT, to_text "
    "TEXT, is_regex INT DEFAULT 0)",
    "CREATE TABLE snippets(id INTEGER PRIMARY KEY AUTOINCREMENT, trigger TEXT UNIQUE, expansion "
    "TEXT)",
    "CREATE TABLE tone_profiles(id INTEGER PRIMARY KEY AUTOINCREMENT, bundle_pattern TEXT UNIQUE, "
    "tone TEXT, match_kind TEXT DEFAULT 'app')",
    "CREATE TABLE modes(\n"
    "  slot INTEGER PRIMARY KEY, name TEXT, instructions TEXT, output_language TEXT,\n"
    "  signature TEXT, is_screenshot INT DEFAULT 0, enabled INT DEFAULT 1, is_command INT DEFAULT "
    "0)",
    "CREATE TABLE sessions(\n"
    "  id INTEGER PRIMARY KEY AUTOINCREMENT, started_at REAL, ended_at REAL,\n"
    "  app_name TEXT, title TEXT, transcript_json TEXT, items_json TEXT)",
    "CREATE INDEX idx_sessions_started ON sessions(started_at DESC)",
};

const char* const kSchemaQuery =
    "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY rowid";

mode_t permissions(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

std::string contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string describeFailure(const std::function<void()>& open) {
    try {
        open();
    } catch (const std::exception& e) {
        return describe(e);
    }
    return "no error";
}

TEST(HistoryStoreOpen, CreatesTheSchemaInWalModeInNewDirectoriesOwnerOnly) {
    TempDir dir;
    const std::string path = (dir / "data/Tevra/weft.sqlite").string();
    HistoryStore store(path);

    RawDatabase raw(path);
    EXPECT_EQ(raw.column(kSchemaQuery), kStoredSchema);
    EXPECT_EQ(raw.value("PRAGMA journal_mode"), "wal");
    for (const std::string& file : {path, path + "-wal", path + "-shm"}) {
        EXPECT_EQ(permissions(file), 0600) << file;
    }
}

TEST(HistoryStoreOpen, ReopeningChangesNothingAndKeepsTheData) {
    TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    {
        HistoryStore store(path);
        store.seedDefaultsIfEmpty();
        store.addToneProfile("code", "plain", "title");
        store.add(HistoryRow{.ts = 100, .app = "kate", .raw = "a", .polished = "A"});
    }
    const auto before = RawDatabase(path).column(kSchemaQuery);
    HistoryStore reopened(path);
    reopened.seedDefaultsIfEmpty();

    EXPECT_EQ(RawDatabase(path).column(kSchemaQuery), before);
    EXPECT_EQ(reopened.recent(-1).size(), 1u);
    EXPECT_EQ(reopened.toneProfiles().size(), 8u);
    EXPECT_EQ(reopened.modes().size(), 6u);
}

TEST(HistoryStoreOpen, AnOlderDatabaseGainsMatchKindAndIsCommand) {
    TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    {
        RawDatabase old(path);
        old.exec(
            "CREATE TABLE tone_profiles(id INTEGER PRIMARY KEY AUTOINCREMENT, bundle_pattern TEXT "
            "UNIQUE, tone TEXT)");
        old.exec(
            "CREATE TABLE modes(slot INTEGER PRIMARY KEY, name TEXT, instructions TEXT, "
            "output_language TEXT, signature TEXT, is_screenshot INT DEFAULT 0, enabled INT "
            "DEFAULT 1)");
        old.exec("INSERT INTO tone_profiles(bundle_pattern,tone) VALUES('slack','casual')");
        old.exec("INSERT INTO modes VALUES(7,'Old','Do it.','de','',0,1)");
    }
    HistoryStore store(path);

    EXPECT_EQ(store.toneProfiles(), (std::vector<ToneProfile>{{"slack", "casual", "app"}}));
    EXPECT_EQ(store.modes(), (std::vector<Mode>{{.slot = 7,
                                                 .name = "Old",
                                                 .instructions = "Do it.",
                                                 .outputLanguage = "de",
                                                 .isCommand = false}}));
    store.saveMode({.slot = 8, .name = "New", .isCommand = true});
    ASSERT_TRUE(store.mode(8));
    EXPECT_TRUE(store.mode(8)->isCommand);
}

TEST(HistoryStoreOpen, PathsThatCannotHoldADatabaseThrow) {
    TempDir dir;

    const std::string directory = (dir / "taken").string();
    std::filesystem::create_directory(directory);
    EXPECT_EQ(describeFailure([&] { HistoryStore store(directory); }), "cannot open " + directory);

    // The parent "directory" is a regular file: the file system refuses.
    std::ofstream((dir / "plain").string()) << "x";
    EXPECT_THROW(HistoryStore((dir / "plain/sub/weft.sqlite").string()),
                 std::filesystem::filesystem_error);
}

TEST(HistoryStoreOpen, AFileThatIsNotADatabaseThrowsAndIsLeftAsItWas) {
    TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    std::string garbage;
    for (int i = 0; i < 4096; ++i) {
        garbage += static_cast<char>((i * 131 + 7) % 256);
    }
    std::ofstream(path, std::ios::binary) << garbage;

    try {
        HistoryStore store(path);
        FAIL() << "opened a file that is not a database";
    } catch (const StoreOpenError& e) {
        EXPECT_EQ(e.description(), "cannot open " + path);
        EXPECT_STREQ(StoreOpenError::domain, "weft.sqlite");
        EXPECT_EQ(StoreOpenError::code, 1);
    }
    EXPECT_EQ(contents(path), garbage);
}

TEST(HistoryStoreOpen, NothingFailsAfterOpenEvenWhenTheTablesAreGone) {
    TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    HistoryStore store(path);
    store.seedDefaultsIfEmpty();
    store.add(HistoryRow{.ts = 1, .words = 3});
    {
        RawDatabase raw(path);
        for (const char* table :
             {"history", "dictionary", "replacements", "snippets", "tone_profiles", "modes"}) {
            raw.exec(std::string("DROP TABLE ") + table);
        }
    }

    store.add(HistoryRow{.ts = 2});
    store.addDictionary("x");
    store.addReplacement("a", "b", false);
    store.saveMode({.slot = 9});
    store.deleteMode(9);
    store.seedDefaultsIfEmpty();
    EXPECT_TRUE(store.recent(10).empty());
    EXPECT_EQ(store.stats(), HistoryStats{});
    EXPECT_TRUE(store.dictionary().empty());
    EXPECT_TRUE(store.replacements().empty());
    EXPECT_TRUE(store.snippets().empty());
    EXPECT_TRUE(store.toneProfiles().empty());
    EXPECT_TRUE(store.modes().empty());
    EXPECT_FALSE(store.mode(0));
    EXPECT_EQ(store.insightsSummary(), InsightsSummary{});
    EXPECT_TRUE(store.perAppUsage(8).empty());
    EXPECT_EQ(store.activityStreaks(), ActivityStreaks{});
    EXPECT_EQ(store.dailyActivity(2).size(), 2u);
}

}  // namespace
}  // namespace tevra
