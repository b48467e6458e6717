#pragma once

#include <string>

namespace tevra::UserName {

// The user's full name from the password database (the first field of its
// GECOS entry), as the desktop shows it; empty when it has none.
std::string full();

}  // namespace tevra::UserName
