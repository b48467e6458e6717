#pragma once

#include <string>
#include <vector>

#include "base/serial_queue.h"
#include "store/sqlite_statement.h"

struct sqlite3;

namespace tevra {

// The store's database handle and the one serial queue that may touch it.
// Every operation runs synchronously on that queue, so any thread may call it;
// only open() and exec() report how it went.
class SqliteDatabase {
public:
    using TextRow = std::vector<std::string>;

    explicit SqliteDatabase(std::string queueLabel);
    // Closes the handle on its queue.
    ~SqliteDatabase();
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Opens or creates the file and runs firstStatement, the first that
    // touches the file (SQLite opens lazily). SQLITE_OK when it is open;
    // otherwise SQLITE_CANTOPEN when the file cannot be opened, SQLITE_NOTADB or
    // SQLITE_CORRUPT when it is not a database, and the handle is closed again.
    int open(const std::string& path, const std::string& firstStatement);

    // Runs work(handle) on the queue and returns its result.
    template <typename F>
    auto sync(F&& work) const {
        return queue_.sync([&] { return work(handle_); });
    }

    // The SQLite result code, which most callers ignore on purpose.
    int exec(const std::string& sql) const;
    // Binds, steps once and finalizes; false when the statement did not prepare.
    bool run(const std::string& sql, const std::vector<SqlValue>& args) const;
    // Every row as `columns` texts, NULL as "".
    std::vector<TextRow> rows(const std::string& sql, int columns) const;

private:
    mutable SerialQueue queue_;
    sqlite3* handle_ = nullptr;
};

}  // namespace tevra
