#pragma once

#include <string>
#include <vector>

#include "polish/tone_profile.h"

// What a new database starts with, table by table.
namespace tevra::StoreDefaults {

// Chat applications casual, mail formal, terminals plain.
std::vector<ToneProfile> toneProfiles();

// Names the recogniser tends to mishear, spelled as they are meant.
std::vector<std::string> dictionaryPhrases();

}  // namespace tevra::StoreDefaults
