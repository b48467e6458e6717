#include "base/user_name.h"

#include <pwd.h>
#include <unistd.h>

namespace tevra::UserName {

std::string full() {
    const passwd* entry = ::getpwuid(::getuid());
    if (entry == nullptr || entry->pw_gecos == nullptr) {
        return {};
    }
    // "Ann Smith,Room 12,555-0100,,": the fields after the name are office and phones.
    const std::string gecos = entry->pw_gecos;
    return gecos.substr(0, gecos.find(','));
}

}  // namespace tevra::UserName
