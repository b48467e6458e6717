#include "base/log_file.h"

#include <system_error>

#include "base/file_io.h"
#include "base/secure_file.h"

namespace tevra {

namespace fs = std::filesystem;

LogFile::LogFile(fs::path dir) : dir_(std::move(dir)), path_(dir_ / "tevra.log") {}

fs::path LogFile::rotatedPath() const {
    return fs::path(path_).replace_extension("1.log");
}

void LogFile::append(std::string_view line) {
    SecureFile::ensureSecureDir(dir_);
    rotateIfNeeded();
    appendToFile(path_, line);
    SecureFile::lockDownFile(path_);
}

void LogFile::rotateIfNeeded() {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path_, error);
    if (error || size <= rotationLimit) {
        return;
    }
    // The older half goes as a whole; either step may fail and is dropped.
    const fs::path target = rotatedPath();
    fs::remove(target, error);
    fs::rename(path_, target, error);
}

}  // namespace tevra
