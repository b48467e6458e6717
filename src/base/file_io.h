#pragma once

#include <filesystem>
#include <string_view>

namespace tevra {

// Writes every byte to fd, going on after partial writes and interruptions.
// False on the first real error.
bool writeAll(int fd, std::string_view bytes);

// Appends bytes to file, creating it with mode 0600 when it does not exist.
bool appendToFile(const std::filesystem::path& file, std::string_view bytes);

}  // namespace tevra
