#include "store/sqlite_database.h"

#include <sqlite3.h>

namespace tevra {

SqliteDatabase::SqliteDatabase(std::string queueLabel) : queue_(std::move(queueLabel)) {}

SqliteDatabase::~SqliteDatabase() {
    queue_.sync([this] { sqlite3_close(handle_); });
}

int SqliteDatabase::open(const std::string& path, const std::string& firstStatement) {
    return queue_.sync([&] {
        sqlite3* handle = nullptr;
        const bool opened = sqlite3_open(path.c_str(), &handle) == SQLITE_OK;
        const int first =
            opened ? sqlite3_exec(handle, firstStatement.c_str(), nullptr, nullptr, nullptr)
                   : SQLITE_CANTOPEN;
        if (!opened || first == SQLITE_NOTADB || first == SQLITE_CORRUPT) {
            sqlite3_close(handle);
            return opened ? first : SQLITE_CANTOPEN;
        }
        handle_ = handle;
        return SQLITE_OK;
    });
}

int SqliteDatabase::exec(const std::string& sql) const {
    return queue_.sync(
        [&] { return sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr); });
}

bool SqliteDatabase::run(const std::string& sql, const std::vector<SqlValue>& args) const {
    return queue_.sync([&] {
        SqliteStatement statement(handle_, sql);
        if (!statement.prepared()) {
            return false;
        }
        statement.bind(args);
        statement.step();
        return true;
    });
}

std::vector<SqliteDatabase::TextRow> SqliteDatabase::rows(const std::string& sql,
                                                          int columns) const {
    return queue_.sync([&] {
        std::vector<TextRow> result;
        SqliteStatement statement(handle_, sql);
        if (!statement.prepared()) {
            return result;
        }
        while (statement.stepRow()) {
            TextRow row;
            row.reserve(static_cast<size_t>(columns));
            for (int column = 0; column < columns; ++column) {
                row.push_back(statement.text(column));
            }
            result.push_back(std::move(row));
        }
        return result;
    });
}

}  // namespace tevra
