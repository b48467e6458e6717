#include <gtest/gtest.h>

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

TEST(HistoryStoreOpen, CreatesTheSchemaOwnerOnlyAndReopensWithoutAChange) {
    TempDir dir;
    const std::string path = (dir / "data/Tevra/weft.sqlite").string();
    {
        HistoryStore store(path);
        store.seedDefaultsIfEmpty();
        store.addToneProfile("code", "plain", "title");
        store.add(HistoryRow{.ts = 100, .app = "kate", .raw = "a", .polished = "A"});
        EXPECT_EQ(RawDatabase(path).column(kSchemaQuery), kStoredSchema);
        EXPECT_EQ(RawDatabase(path).value("PRAGMA journal_mode"), "wal");
        for (const std::string& file : {path, path + "-wal", path + "-shm"}) {
            EXPECT_EQ(testing::modeOf(file), 0600u) << file;
        }
    }
    HistoryStore reopened(path);
    reopened.seedDefaultsIfEmpty();
    EXPECT_EQ(RawDatabase(path).column(kSchemaQuery), kStoredSchema);
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
            "UNIQUE, tone TEXT);"
            "CREATE TABLE modes(slot INTEGER PRIMARY KEY, name TEXT, instructions TEXT, "
            "output_language TEXT, signature TEXT, is_screenshot INT DEFAULT 0, enabled INT "
            "DEFAULT 1);"
            "INSERT INTO tone_profiles(bundle_pattern,tone) VALUES('slack','casual');"
            "INSERT INTO modes VALUES(7,'Old','Do it.','de','',0,1)");
    }
    HistoryStore store(path);
    EXPECT_EQ(store.toneProfiles(), (std::vector<ToneProfile>{{"slack", "casual", "app"}}));
    EXPECT_EQ(store.modes(),
              (std::vector<Mode>{
                  {.slot = 7, .name = "Old", .instructions = "Do it.", .outputLanguage = "de"}}));
    store.saveMode({.slot = 8, .name = "New", .isCommand = true});
    EXPECT_TRUE(store.mode(8).value().isCommand);
}

TEST(HistoryStoreOpen, WhatCannotHoldADatabaseThrowsAndIsLeftAsItWas) {
    TempDir dir;
    const std::string directory = (dir / "taken").string();
    std::filesystem::create_directory(directory);
    std::string garbage;
    for (int i = 0; i < 4096; ++i) {
        garbage += static_cast<char>((i * 131 + 7) % 256);
    }
    const std::string corrupt = (dir / "weft.sqlite").string();
    std::ofstream(corrupt, std::ios::binary) << garbage;

    // Only a file that is there and is no database counts as damaged.
    for (const auto& [path, damaged] : {std::pair{directory, false}, std::pair{corrupt, true}}) {
        try {
            HistoryStore store(path);
            ADD_FAILURE() << "opened " << path;
        } catch (const StoreOpenError& e) {
            EXPECT_EQ(e.description(), "cannot open " + path);
            EXPECT_EQ(dynamic_cast<const StoreDamagedError*>(&e) != nullptr, damaged) << path;
        }
    }
    EXPECT_EQ(testing::readFile(corrupt), garbage);
    // The parent "directory" is a regular file: the file system refuses.
    EXPECT_THROW(HistoryStore((dir / "weft.sqlite/sub/weft.sqlite").string()),
                 std::filesystem::filesystem_error);
}

TEST(HistoryStoreOpen, NothingFailsAfterOpenEvenWhenTheTablesAreGone) {
    TempDir dir;
    const std::string path = (dir / "weft.sqlite").string();
    HistoryStore store(path);
    store.seedDefaultsIfEmpty();
    store.add(HistoryRow{.ts = 1, .words = 3});
    RawDatabase(path).exec(
        "DROP TABLE history; DROP TABLE dictionary; DROP TABLE replacements; DROP TABLE snippets;"
        "DROP TABLE tone_profiles; DROP TABLE modes");

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
