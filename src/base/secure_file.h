#pragma once

#include <filesystem>

// File modes that keep Tevra's data readable by its owner only. Housekeeping:
// every failure is dropped where it happens.
namespace tevra::SecureFile {

// Creates the directory and any missing parents with mode 0700, then sets 0700
// on the directory itself, which also tightens one that already existed.
void ensureSecureDir(const std::filesystem::path& dir);

// Sets mode 0600 on the file if it exists; an absent file is no error.
void lockDownFile(const std::filesystem::path& file);

}  // namespace tevra::SecureFile
