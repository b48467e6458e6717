#include "store/store_schema.h"

#include <sqlite3.h>

#include <iterator>
#include <set>

#include "store/sqlite_database.h"

namespace tevra::StoreSchema {
namespace {

// Run in this order at every start. There is no schema version: a column is
// added by one more ALTER TABLE behind its table's CREATE TABLE, and once the
// column exists SQLite refuses the statement on every later start, which is
// ignored on purpose.
const std::string kSchema[] = {
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

// Every "table.column" of a database.
const std::string kColumns =
    "SELECT m.name || '.' || c.name FROM sqlite_master AS m, pragma_table_info(m.name) AS c "
    "WHERE m.type = 'table' AND m.name NOT LIKE 'sqlite\\_%' ESCAPE '\\'";

bool isDamage(int code) {
    return code == SQLITE_CORRUPT || code == SQLITE_NOTADB;
}

// The columns, or the SQLite result code of the failure.
struct Columns {
    std::set<std::string> names;
    int code = SQLITE_OK;
};

Columns columnsOf(const SqliteDatabase& db) {
    return db.sync([](sqlite3* handle) {
        Columns columns;
        SqliteStatement statement(handle, kColumns);
        if (!statement.prepared()) {
            columns.code = sqlite3_errcode(handle);
            return columns;
        }
        int code = SQLITE_OK;
        while ((code = statement.step()) == SQLITE_ROW) {
            columns.names.insert(statement.text(0));
        }
        if (code != SQLITE_DONE) {
            columns.code = code;
        }
        return columns;
    });
}

// What the schema gives an empty database, worked out once on one in memory.
const std::set<std::string>& expectedColumns() {
    static const std::set<std::string> columns = [] {
        SqliteDatabase blank("weft.schema");
        blank.open(":memory:", kSchema[0]);
        for (const std::string& statement : kSchema) {
            blank.exec(statement);
        }
        return columnsOf(blank).names;
    }();
    return columns;
}

Fault failure(int code) {
    return isDamage(code)
               ? Fault{"the file is corrupt", true}
               : Fault{std::string("the database answered \"") + sqlite3_errstr(code) + "\"",
                       false};
}

}  // namespace

const std::string& first() {
    return kSchema[0];
}

std::optional<Fault> apply(const SqliteDatabase& db) {
    // A statement refused for a reason that may pass (busy, read-only, a full
    // disk) explains a missing column better than damage does.
    std::optional<Fault> passing;
    for (size_t i = 1; i < std::size(kSchema); ++i) {
        const int code = db.exec(kSchema[i]);
        if (isDamage(code)) {
            return failure(code);
        }
        if (code != SQLITE_OK && code != SQLITE_ERROR && !passing) {
            passing = failure(code);
        }
    }
    const Columns present = columnsOf(db);
    if (present.code != SQLITE_OK) {
        return failure(present.code);
    }
    for (const std::string& column : expectedColumns()) {
        if (!present.names.contains(column)) {
            if (passing) {
                return passing;
            }
            return Fault{"its tables could not be brought up to date: " + column + " is missing",
                         true};
        }
    }
    return std::nullopt;
}

}  // namespace tevra::StoreSchema
