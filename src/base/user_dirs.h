#pragma once

#include <filesystem>

namespace tevra::UserDirs {

// $HOME, or the password database's entry where HOME is unset; empty when
// neither knows.
std::filesystem::path home();

// Tevra's data directory: $XDG_DATA_HOME/Tevra, by default ~/.local/share/Tevra.
std::filesystem::path data();

}  // namespace tevra::UserDirs
