#pragma once

#include <chrono>
#include <filesystem>

namespace tevra::DatabaseFiles {

// True when the file holds something, and not what every SQLite database
// begins with. Such a file is damaged; it is best left unopened, as SQLite
// would delete a write-ahead log beside it on closing.
bool isForeign(const std::filesystem::path& database);

// Moves a database that will not open out of the way, never deleting it: the
// file becomes "<name>.damaged-<UTC stamp>" beside it (a number follows when
// that is taken), and its "-wal", "-shm" and "-journal" companions move with
// it under the same name, so that SQLite still finds them together and the
// next database at the old path starts without them. Returns the new path of
// the file; throws the file-system error when something could not be moved.
std::filesystem::path moveAside(const std::filesystem::path& database,
                                std::chrono::system_clock::time_point now);

}  // namespace tevra::DatabaseFiles
