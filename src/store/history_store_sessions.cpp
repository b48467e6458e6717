#include <sqlite3.h>

#include <algorithm>

#include "store/history_store.h"
#include "store/session_json.h"
#include "store/sqlite_database.h"

namespace tevra {
namespace {

const std::string kInsertSession =
    "INSERT INTO sessions(started_at,ended_at,app_name,title,transcript_json,items_json)\n"
    "VALUES(?,?,?,?,?,?)";

const std::string kRecentSessions =
    "SELECT id,started_at,ended_at,app_name,title,transcript_json,items_json\n"
    "FROM sessions ORDER BY started_at DESC LIMIT ?";

const std::string kSessionById =
    "SELECT id,started_at,ended_at,app_name,title,transcript_json,items_json\n"
    "FROM sessions WHERE id = ?";

// Keeps the newest sessions by started_at, whatever their ids: a session saved
// with an old start may go at once.
const std::string kPruneSessions = std::string("DELETE FROM sessions WHERE id NOT IN ") +
                                   "(SELECT id FROM sessions ORDER BY started_at DESC LIMIT " +
                                   std::to_string(HistoryStore::maxSessions) + ")";

template <typename Record>
std::vector<Record> decodedOrEmpty(std::vector<Record> (*decode)(std::string_view),
                                   const std::string& text) {
    try {
        return decode(text);
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace

int64_t HistoryStore::saveSession(const NoteSession& session) {
    std::string transcript;
    std::string items;
    try {
        transcript = SessionJSON::encodeTranscript(session.transcript);
        items = SessionJSON::encodeItems(session.items);
    } catch (const std::exception&) {
        return 0;
    }
    return db_->sync([&](sqlite3* handle) -> int64_t {
        SqliteStatement insert(handle, kInsertSession);
        if (!insert.prepared()) {
            return 0;
        }
        insert.bind({session.startedAt, session.endedAt ? SqlValue(*session.endedAt) : SqlValue(),
                     session.appName, session.title, transcript, items});
        if (insert.step() != SQLITE_DONE) {
            return 0;
        }
        const int64_t id = sqlite3_last_insert_rowid(handle);
        db_->exec(kPruneSessions);
        return id;
    });
}

std::vector<NoteSession> HistoryStore::recentSessions(int64_t limit) const {
    return db_->sync([&](sqlite3* handle) {
        std::vector<NoteSession> sessions;
        SqliteStatement statement(handle, kRecentSessions);
        if (!statement.prepared()) {
            return sessions;
        }
        statement.bind({std::max<int64_t>(limit, 0)});
        while (statement.stepRow()) {
            sessions.push_back(sessionRow(statement));
        }
        return sessions;
    });
}

std::optional<NoteSession> HistoryStore::session(int64_t id) const {
    return db_->sync([&](sqlite3* handle) -> std::optional<NoteSession> {
        SqliteStatement statement(handle, kSessionById);
        if (!statement.prepared()) {
            return std::nullopt;
        }
        statement.bind({id});
        if (!statement.stepRow()) {
            return std::nullopt;
        }
        return sessionRow(statement);
    });
}

void HistoryStore::deleteSession(int64_t id) {
    db_->run("DELETE FROM sessions WHERE id = ?", {id});
}

NoteSession HistoryStore::sessionRow(const SqliteStatement& statement) {
    NoteSession session;
    session.id = statement.int64(0);
    session.startedAt = statement.real(1);
    if (!statement.isNull(2)) {
        session.endedAt = statement.real(2);
    }
    session.appName = statement.text(3);
    session.title = statement.text(4);
    session.transcript = decodedOrEmpty(SessionJSON::decodeTranscript, statement.text(5));
    session.items = decodedOrEmpty(SessionJSON::decodeItems, statement.text(6));
    return session;
}

}  // namespace tevra
