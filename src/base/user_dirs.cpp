#include "base/user_dirs.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

namespace tevra::UserDirs {

std::filesystem::path home() {
    if (const char* home = ::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    // No HOME, as under some service managers: ask the password database.
    if (const passwd* entry = ::getpwuid(::getuid());
        entry != nullptr && entry->pw_dir != nullptr) {
        return entry->pw_dir;
    }
    return {};
}

std::filesystem::path data() {
    // A relative XDG_DATA_HOME is invalid by the XDG rules and is ignored.
    if (const char* xdg = ::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg == '/') {
        return std::filesystem::path(xdg) / "Tevra";
    }
    return home() / ".local" / "share" / "Tevra";
}

}  // namespace tevra::UserDirs
