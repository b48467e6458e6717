#pragma once

#include <string>

namespace tevra {

// A new random UUID in its usual text form, upper case:
// "1B4E28BA-2FA1-11D2-883F-0016D3CCA427".
std::string newUUID();

}  // namespace tevra
