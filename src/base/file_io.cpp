#include "base/file_io.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace tevra {

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = ::write(fd, bytes.data(), bytes.size());
        if (n < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes.remove_prefix(static_cast<size_t>(n));
    }
    return true;
}

bool appendToFile(const std::filesystem::path& file, std::string_view bytes) {
    const int fd = ::open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        return false;
    }
    const bool ok = writeAll(fd, bytes);
    return ::close(fd) == 0 && ok;
}

}  // namespace tevra
