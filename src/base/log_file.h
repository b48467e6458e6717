#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace tevra {

// The file side of the log: "tevra.log" in a directory, private to its owner,
// moved aside to "tevra.1.log" once it has grown past rotationLimit. Not
// thread-safe: the log queue is its only caller. Every failure is dropped.
class LogFile {
public:
    static constexpr std::uintmax_t rotationLimit = 1'000'000;

    explicit LogFile(std::filesystem::path dir);

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path rotatedPath() const;

    // Rotates if the file is already past the limit, then appends line. The
    // size is tested before the write, so a file may end one line past the limit.
    void append(std::string_view line);

private:
    void rotateIfNeeded();

    std::filesystem::path dir_;
    std::filesystem::path path_;
};

}  // namespace tevra
