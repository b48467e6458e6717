#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace tevra {

// A value bound by position: text, a 64-bit integer, a double, or NULL.
using SqlValue = std::variant<std::monostate, std::string, int64_t, double>;

inline SqlValue sqlText(const std::optional<std::string>& text) {
    return text ? SqlValue(*text) : SqlValue();
}

// One prepared statement, finalized when it goes out of scope: the store
// prepares, uses and finalizes every statement within one operation.
class SqliteStatement {
public:
    SqliteStatement(sqlite3* db, const std::string& sql);
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    // False when the statement did not compile (or there is no database).
    bool prepared() const { return stmt_ != nullptr; }

    // Binds values to positions 1, 2, ... Text goes in up to its first NUL and
    // is copied by SQLite at bind time.
    void bind(const std::vector<SqlValue>& values);
    // One step; the SQLite result code.
    int step();
    bool stepRow();  // true when the step produced a row

    bool isNull(int column) const;
    std::string text(int column) const;  // NULL reads as the empty string
    int64_t int64(int column) const;
    double real(int column) const;

private:
    sqlite3_stmt* stmt_ = nullptr;
};

// A decimal integer with an optional sign and nothing else; nullopt otherwise.
std::optional<int64_t> parseDecimal(std::string_view text);

}  // namespace tevra
