#include "store/sqlite_statement.h"

#include <sqlite3.h>

#include <charconv>

namespace tevra {

SqliteStatement::SqliteStatement(sqlite3* db, const std::string& sql) {
    if (db == nullptr) {
        return;
    }
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK) {
        sqlite3_finalize(stmt_);
        stmt_ = nullptr;
    }
}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(stmt_);
}

void SqliteStatement::bind(const std::vector<SqlValue>& values) {
    int position = 1;
    for (const SqlValue& value : values) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            sqlite3_bind_text(stmt_, position, text->c_str(), -1, SQLITE_TRANSIENT);
        } else if (const auto* integer = std::get_if<int64_t>(&value)) {
            sqlite3_bind_int64(stmt_, position, *integer);
        } else if (const auto* real = std::get_if<double>(&value)) {
            sqlite3_bind_double(stmt_, position, *real);
        } else {
            sqlite3_bind_null(stmt_, position);
        }
        ++position;
    }
}

int SqliteStatement::step() {
    return sqlite3_step(stmt_);
}

bool SqliteStatement::stepRow() {
    return step() == SQLITE_ROW;
}

bool SqliteStatement::isNull(int column) const {
    return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

std::string SqliteStatement::text(int column) const {
    const unsigned char* value = sqlite3_column_text(stmt_, column);
    return value ? std::string(reinterpret_cast<const char*>(value)) : std::string();
}

int64_t SqliteStatement::int64(int column) const {
    return sqlite3_column_int64(stmt_, column);
}

double SqliteStatement::real(int column) const {
    return sqlite3_column_double(stmt_, column);
}

std::optional<int64_t> parseDecimal(std::string_view text) {
    // from_chars takes a leading "-" but not a "+".
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.empty()) {
        return std::nullopt;
    }
    return value;
}

}  // namespace tevra
