#include "app/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <utility>

namespace tevra {
namespace {

std::filesystem::path lockDirectory() {
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime && *runtime) {
        return runtime;
    }
    return std::filesystem::temp_directory_path();
}

}  // namespace

std::optional<SingleInstance> SingleInstance::acquire(const std::string& display) {
    std::string name = "tevra-" + std::to_string(::getuid()) + "-";
    for (char c : display) {
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    }
    const auto path = lockDirectory() / (name + ".lock");
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0) {
        // Nowhere to keep a lock: better two instances than none.
        return SingleInstance(-1);
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return std::nullopt;
    }
    return SingleInstance(fd);
}

SingleInstance::SingleInstance(SingleInstance&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)) {}

SingleInstance::~SingleInstance() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

}  // namespace tevra
