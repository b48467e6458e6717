#include <set>

#include "polish/mode_defaults.h"
#include "polish/voice.h"
#include "store/history_store.h"
#include "store/sqlite_database.h"
#include "store/store_defaults.h"

namespace tevra {

namespace {

SqlValue flag(bool value) {
    return int64_t{value ? 1 : 0};
}

}  // namespace

void HistoryStore::saveMode(const Mode& mode) {
    db_->run(
        "INSERT OR REPLACE INTO modes(slot,name,instructions,output_language,signature,\n"
        "                             is_screenshot,is_command,enabled)\n"
        "VALUES(?,?,?,?,?,?,?,?)",
        {mode.slot, mode.name, mode.instructions, mode.outputLanguage, mode.signature,
         flag(mode.isScreenshot), flag(mode.isCommand), flag(mode.enabled)});
}

std::vector<Mode> HistoryStore::modes() const {
    std::vector<Mode> result;
    for (auto& row :
         db_->rows("SELECT slot,name,instructions,output_language,signature,is_screenshot,"
                   "is_command,enabled\nFROM modes ORDER BY slot",
                   8)) {
        result.push_back(Mode{
            .slot = parseDecimal(row[0]).value_or(0),
            .name = std::move(row[1]),
            .instructions = std::move(row[2]),
            .outputLanguage = std::move(row[3]),
            .signature = std::move(row[4]),
            .isScreenshot = row[5] == "1",
            .isCommand = row[6] == "1",
            .enabled = row[7] == "1",
        });
    }
    return result;
}

std::optional<Mode> HistoryStore::mode(int64_t slot) const {
    for (Mode& candidate : modes()) {
        if (candidate.slot == slot && candidate.enabled) {
            return std::move(candidate);
        }
    }
    return std::nullopt;
}

void HistoryStore::resetModesToDefaults() {
    db_->exec("DELETE FROM modes");
    for (const Mode& seed : ModeDefaults::seed()) {
        saveMode(seed);
    }
}

Mode HistoryStore::addFormalLanguageMode(const std::string& language) {
    std::set<int64_t> taken;
    for (const Mode& existing : modes()) {
        taken.insert(existing.slot);
    }
    int64_t slot = 0;
    while (taken.contains(slot)) {
        ++slot;
    }
    const Mode mode{
        .slot = slot,
        .name = "Formal message — " + language,
        .instructions = std::string(ModeDefaults::formalInstructions),
        .outputLanguage = language,
        .signature = std::string(Voice::signOffMarker),
        .isScreenshot = false,
        .isCommand = false,
        .enabled = true,
    };
    saveMode(mode);
    return mode;
}

void HistoryStore::deleteMode(int64_t slot) {
    if (slot < static_cast<int64_t>(ModeDefaults::seed().size())) {
        return;
    }
    db_->run("DELETE FROM modes WHERE slot = ?", {slot});
}

void HistoryStore::seedDefaultsIfEmpty() {
    if (modes().empty()) {
        for (const Mode& seed : ModeDefaults::seed()) {
            saveMode(seed);
        }
    }
    if (toneProfiles().empty()) {
        for (const ToneProfile& profile : StoreDefaults::toneProfiles()) {
            addToneProfile(profile.pattern, profile.tone, profile.matchKind);
        }
    }
    if (dictionary().empty()) {
        for (const std::string& phrase : StoreDefaults::dictionaryPhrases()) {
            addDictionary(phrase);
        }
    }
}

}  // namespace tevra
