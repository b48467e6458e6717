#include "base/atomic_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

#include "base/file_io.h"

namespace tevra {

namespace {

// Makes the rename itself durable. Best effort: some file systems refuse
// fsync on a directory, and the file is already complete either way.
void syncDirectory(const std::filesystem::path& dir) {
    const int fd = ::open(dir.empty() ? "." : dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

}  // namespace

bool writeFileAtomically(const std::filesystem::path& file, std::string_view contents) {
    const std::filesystem::path dir = file.parent_path();
    // mkostemp creates the file with mode 0600, so the contents are never
    // readable by others, not even before the final mode is set.
    std::string temp = (dir / ("." + file.filename().string() + ".XXXXXX")).string();
    const int fd = ::mkostemp(temp.data(), O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    bool ok = writeAll(fd, contents) && ::fsync(fd) == 0;
    ok = ::close(fd) == 0 && ok;
    ok = ok && ::rename(temp.c_str(), file.c_str()) == 0;
    if (!ok) {
        ::unlink(temp.c_str());
        return false;
    }
    syncDirectory(dir);
    return true;
}

}  // namespace tevra
