#include "store/history_store.h"

#include <sqlite3.h>

#include <cmath>
#include <filesystem>

#include "base/secure_file.h"
#include "store/database_files.h"
#include "store/sqlite_database.h"
#include "store/store_open_error.h"
#include "store/store_schema.h"

namespace tevra {

namespace {

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
    if (DatabaseFiles::isForeign(dbPath)) {
        throw StoreDamagedError(dbPath, "not a database");
    }
    switch (db_->open(dbPath, StoreSchema::first())) {
        case SQLITE_OK:
            break;
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            throw StoreDamagedError(dbPath, "not a database");
        default:
            throw StoreOpenError(dbPath);
    }
    if (const auto fault = StoreSchema::apply(*db_)) {
        if (fault->damaged) {
            throw StoreDamagedError(dbPath, fault->reason);
        }
        throw StoreOpenError(dbPath);
    }
    SecureFile::lockDownFile(dbPath);
    SecureFile::lockDownFile(dbPath + "-wal");
    SecureFile::lockDownFile(dbPath + "-shm");
}

HistoryStore::~HistoryStore() = default;

void HistoryStore::add(const HistoryRow& row) {
    const std::vector<SqlValue> values = {
        row.ts,         row.app,          row.raw,      row.polished, sqlText(row.language),
        row.durationMs, row.sttMs,        row.polishMs, row.insertMs, row.words,
        row.sttBackend, row.polishBackend};
    // The insert, then the prune whatever the insert's step did, but not for a
    // row never prepared.
    auto insertAndPrune = [&] {
        if (db_->run(kInsertHistory, values)) {
            db_->exec(kPruneHistory);
        }
    };
    db_->sync([&](sqlite3* handle) {
        // One transaction for the row and the prune: one write to disk, not two.
        const bool inTransaction =
            sqlite3_exec(handle, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK;
        insertAndPrune();
        if (inTransaction &&
            sqlite3_exec(handle, "COMMIT", nullptr, nullptr, nullptr) != SQLITE_OK) {
            // The rollback takes the row with it: write it again on its own,
            // as separate statements would have, each committing alone.
            sqlite3_exec(handle, "ROLLBACK", nullptr, nullptr, nullptr);
            insertAndPrune();
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
