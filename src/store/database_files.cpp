#include "store/database_files.h"

#include <algorithm>
#include <fstream>
#include <string>
#include <string_view>

#include "base/iso8601.h"

namespace tevra::DatabaseFiles {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCompanions[] = {"-wal", "-shm", "-journal"};

fs::path withSuffix(const fs::path& file, const std::string& suffix) {
    return fs::path(file.string() + suffix);
}

bool taken(const fs::path& file) {
    if (fs::exists(fs::symlink_status(file))) {
        return true;
    }
    return std::any_of(std::begin(kCompanions), std::end(kCompanions), [&](const char* suffix) {
        return fs::exists(fs::symlink_status(withSuffix(file, suffix)));
    });
}

}  // namespace

bool isForeign(const fs::path& database) {
    static constexpr std::string_view kMagic{"SQLite format 3\0", 16};
    std::error_code error;
    if (!fs::is_regular_file(database, error) || fs::file_size(database, error) == 0 || error) {
        return false;
    }
    std::ifstream in(database, std::ios::binary);
    std::string head(kMagic.size(), '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    return in.gcount() < static_cast<std::streamsize>(kMagic.size()) || head != kMagic;
}

fs::path moveAside(const fs::path& database, std::chrono::system_clock::time_point now) {
    std::string stamp = iso8601UTC(now);
    std::replace(stamp.begin(), stamp.end(), ':', '-');
    const fs::path base = withSuffix(database, ".damaged-" + stamp);
    fs::path aside = base;
    for (int n = 2; taken(aside); ++n) {
        aside = withSuffix(base, "-" + std::to_string(n));
    }
    // The companions first: a log left behind would be replayed into the
    // fresh database that takes the old name.
    for (const char* suffix : kCompanions) {
        const fs::path companion = withSuffix(database, suffix);
        if (fs::exists(fs::symlink_status(companion))) {
            fs::rename(companion, withSuffix(aside, suffix));
        }
    }
    fs::rename(database, aside);
    return aside;
}

}  // namespace tevra::DatabaseFiles
