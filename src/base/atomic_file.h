#pragma once

#include <filesystem>
#include <string_view>

namespace tevra {

// Replaces file with contents so that a reader sees either the old file or the
// whole new one, never a part: the bytes go to a private temporary file in the
// same directory, reach the disk, and are renamed over file. On failure the old
// file stays as it was, the temporary file is removed, and the result is false.
bool writeFileAtomically(const std::filesystem::path& file, std::string_view contents);

}  // namespace tevra
