#include "store/history_store.h"

#include <sqlite3.h>

#include <cmath>
#include <filesystem>

#include "base/secure_file.h"
#include "store/sqlite_database.h"
#include "store/store_open_error.h"

namespace tevra {

namespace {

// Run in this order at every start. There is no schema version: a column is
// added by one more ALTER TABLE behind its table's CREATE TABLE, and once the
// column exists SQLite refuses the statement on every later start, which is
// ignored on purpose.
const char* const kSchema[] = {
    "PRAGMA journal_mode=WAL",
    "CREATE TABLE IF NOT EXISTS history(\n"
    "  id INTEGER PRIMARY KEY AUTOINCREMENT, ts REAL, app TEXT, raw TEXT, polished TEXT,\n"
    "  language TEXT, duration_ms INT, stt_ms INT, polish_ms INT, insert_ms INT,\n"
    "  words INT, stt_backend TEXT, polish_backend TEXT)",
    "CREATE INDEX IF NOT EXISTS idx_history_ts ON history(ts DESC)",
    "CREATE TABLE IF NOT EXISTS dictionary(id INTEGER PRIMARY KEY AUTOINCREMENT, phrase TEXT "
    "UNIQUE)",
    "CREATE TABLE IF NOT EXISTS replacements(id INTEGER PRIMARY KEY AUTOINCREMENT, from_text "
    "TEXT, to_text TEXT, is_regex INT DEFAULT 0)",
    "CREATE TABLE IF NOT EXISTS snippets(id INTEGER PRIMARY KEY AUTOINCREMENT, trigger TEXT "
    "UNIQUE, expansion TEXT)",
    "CREATE TABLE IF NOT EXISTS tone_profiles(id INTEGER PRIMARY KEY AUTOINCREMENT, "
    "bundle_pattern TEXT UNIQUE, tone TEXT)",
    "ALTER TABLE tone_profiles ADD COLUMN match_kind TEXT DEFAULT 'app'",
    "CREATE TABLE IF NOT EXISTS modes(\n"
    "  slot INTEGER PRIMARY KEY, name TEXT, instructions TEXT, output_language TEXT,\n"
    "  signature TEXT, is_screenshot INT DEFAULT 0, enabled INT DEFAULT 1)",
    "ALTER TABLE modes ADD COLUMN is_command INT DEFAULT 0",
    "CREATE TABLE IF NOT EXISTS sessions(\n"
    "  id INTEGER PRIMARY KEY AUTOINCREMENT, started_at REAL, ended_at REAL,\n"
    "  app_name TEXT, title TEXT, transcript_json TEXT, items_json TEXT)",
    "CREATE INDEX IF NOT EXISTS idx_sessions_started ON sessions(started_at DESC)",
};

const std::string kInsertHistory =
    "INSERT INTO history(ts,app,raw,polished,language,duration_ms,stt_ms,polish_ms,\n"
    "                    insert_ms,words,stt_backend,polish_backend)\n"
    "VALUES(?,?,?,?,?,?,?,?,?,?,?,?)";

const std::string kRecent =
    "SELECT id,ts,app,raw,polished,language,duration_ms,stt_ms,polish_ms,insert_ms,\n"
    "       words,stt_backend,polish_backend\n"
    "FROM history ORDER BY ts DESC LIMIT ?";

const std::string kStats =
    "SELECT COUNT(*), COALESCE(SUM(words),0), COALESCE(AVG(stt_ms+polish_ms+insert_ms),0) FROM "
    "history";

// Keeps the newest rows by ts, whatever their ids.
const std::string kPruneHistory = std::string("DELETE FROM history WHERE id NOT IN ") +
                                  "(SELECT id FROM history ORDER BY ts DESC LIMIT " +
                                  std::to_string(HistoryStore::maxHistoryRows) + ")";

void createParentDirectory(const std::string& dbPath) {
    const std::filesystem::path parent = std::filesystem::path(dbPath).parent_path();
    if (!parent.empty()) {
        std::filesystem::create_directories(parent);
    }
}

}  // namespace

HistoryStore::HistoryStore(const std::string& dbPath, WallClock wallClock)
    : db_(std::make_unique<SqliteDatabase>("weft.historystore")),
      wallClock_(wallClock ? std::move(wallClock) : WallClock(HistoryRow::currentTimestamp)) {
    createParentDirectory(dbPath);
    if (!db_->open(dbPath, kSchema[0])) {
        throw StoreOpenError(dbPath);
    }
    for (size_t i = 1; i < std::size(kSchema); ++i) {
        db_->exec(kSchema[i]);
    }
    SecureFile::lockDownFile(dbPath);
    SecureFile::lockDownFile(dbPath + "-wal");
    SecureFile::lockDownFile(dbPath + "-shm");
}

HistoryStore::~HistoryStore() = default;

void HistoryStore::add(const HistoryRow& row) {
    db_->sync([&](sqlite3* handle) {
        // One transaction for the row and the prune: one write to disk, not two.
        const bool inTransaction =
            sqlite3_exec(handle, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
        const bool prepared =
            db_->run(kInsertHistory, {row.ts, row.app, row.raw, row.polished, sqlText(row.language),
                                      row.durationMs, row.sttMs, row.polishMs, row.insertMs,
                                      row.words, row.sttBackend, row.polishBackend});
        // The prune runs whatever the insert's step did, but not for a row never prepared.
        if (prepared) {
            db_->exec(kPruneHistory);
        }
        if (inTransaction &&
            sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
            sqlite3_exec(handle, "ROLLBACK", nullptr, nullptr, nullptr);  // as a failed step
        }
    });
}

std::vector<HistoryRow> HistoryStore::recent(int64_t limit) const {
    return db_->sync([&](sqlite3* handle) {
        std::vector<HistoryRow> result;
        SqliteStatement statement(handle, kRecent);
        if (!statement.prepared()) {
            return result;
        }
        statement.bind({limit});
        while (statement.stepRow()) {
            HistoryRow row;
            row.id = statement.int64(0);
            row.ts = statement.real(1);
            row.app = statement.text(2);
            row.raw = statement.text(3);
            row.polished = statement.text(4);
            if (!statement.isNull(5)) {
                row.language = statement.text(5);
            }
            row.durationMs = statement.int64(6);
            row.sttMs = statement.int64(7);
            row.polishMs = statement.int64(8);
            row.insertMs = statement.int64(9);
            row.words = statement.int64(10);
            row.sttBackend = statement.text(11);
            row.polishBackend = statement.text(12);
            result.push_back(std::move(row));
        }
        return result;
    });
}

HistoryStats HistoryStore::stats() const {
    return db_->sync([&](sqlite3* handle) {
        SqliteStatement statement(handle, kStats);
        if (!statement.prepared() || !statement.stepRow()) {
            return HistoryStats{};
        }
        return HistoryStats{statement.int64(0), statement.int64(1),
                            static_cast<int64_t>(std::trunc(statement.real(2)))};
    });
}

}  // namespace tevra
