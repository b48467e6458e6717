#pragma once

#include <optional>
#include <string>

namespace tevra {

class SqliteDatabase;

// The tables of the one database, brought up to date at every open.
namespace StoreSchema {

// Runs the schema statements on an open database and checks the outcome.
// Nothing when every table and column that the statements give an empty
// database is there (a statement refused on purpose, as an ALTER TABLE whose
// column exists, does not count). Otherwise why not, and whether the file is
// damaged: a schema that cannot be brought up to date or a file SQLite calls
// corrupt is; a file that is busy, locked, read-only or on a full disk is not,
// and may open next time.
struct Fault {
    std::string reason;
    bool damaged = false;
};
std::optional<Fault> apply(const SqliteDatabase& db);

// The first statement, the one that touches the file.
const std::string& first();

}  // namespace StoreSchema

}  // namespace tevra
