#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

namespace tevra::testing {

// A second, plain connection to a database file, for tests that look past the
// store: what the schema says, or a database shaped by an older version.
class RawDatabase {
public:
    explicit RawDatabase(const std::string& path) {
        if (sqlite3_open(path.c_str(), &db_) != SQLITE_OK) {
            ADD_FAILURE() << "cannot open " << path;
        }
    }
    ~RawDatabase() { sqlite3_close(db_); }
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;

    void exec(const std::string& sql) {
        char* error = nullptr;
        if (sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
            ADD_FAILURE() << sql << ": " << (error ? error : "?");
        }
        sqlite3_free(error);
    }

    // The first column of every row, NULL as "<null>".
    std::vector<std::string> column(const std::string& sql) {
        std::vector<std::string> values;
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) {
            ADD_FAILURE() << sql << ": " << sqlite3_errmsg(db_);
            return values;
        }
        while (sqlite3_step(statement) == SQLITE_ROW) {
            const unsigned char* text = sqlite3_column_text(statement, 0);
            values.push_back(text ? reinterpret_cast<const char*>(text) : "<null>");
        }
        sqlite3_finalize(statement);
        return values;
    }

    std::string value(const std::string& sql) {
        const auto values = column(sql);
        return values.empty() ? "<none>" : values.front();
    }

private:
    sqlite3* db_ = nullptr;
};

}  // namespace tevra::testing
