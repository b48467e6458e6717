#include "base/secure_file.h"

#include <sys/stat.h>

#include <system_error>
#include <vector>

namespace tevra::SecureFile {

namespace fs = std::filesystem;

void ensureSecureDir(const fs::path& dir) {
    // mkdir rather than create_directories, so that parents made on the way are
    // private from the moment they exist instead of following the umask.
    std::vector<fs::path> missing;
    std::error_code ignored;
    for (fs::path p = dir; !p.empty() && !fs::exists(p, ignored); p = p.parent_path()) {
        missing.push_back(p);
        if (p == p.parent_path()) {
            break;
        }
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        ::mkdir(it->c_str(), 0700);
    }
    fs::permissions(dir, fs::perms::owner_all, fs::perm_options::replace, ignored);
}

void lockDownFile(const fs::path& file) {
    std::error_code ignored;
    if (!fs::exists(file, ignored)) {
        return;
    }
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace,
                    ignored);
}

}  // namespace tevra::SecureFile
