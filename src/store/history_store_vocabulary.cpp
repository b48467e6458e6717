#include "store/history_store.h"
#include "store/sqlite_database.h"

namespace tevra {

void HistoryStore::addDictionary(const std::string& phrase) {
    db_->run("INSERT OR IGNORE INTO dictionary(phrase) VALUES(?)", {phrase});
}

void HistoryStore::deleteDictionary(const std::string& phrase) {
    db_->run("DELETE FROM dictionary WHERE phrase=?", {phrase});
}

std::vector<std::string> HistoryStore::dictionary() const {
    std::vector<std::string> phrases;
    for (auto& row : db_->rows("SELECT phrase FROM dictionary ORDER BY phrase", 1)) {
        phrases.push_back(std::move(row[0]));
    }
    return phrases;
}

void HistoryStore::addReplacement(const std::string& from, const std::string& to, bool isRegex) {
    db_->run("INSERT INTO replacements(from_text,to_text,is_regex) VALUES(?,?,?)",
             {from, to, int64_t{isRegex ? 1 : 0}});
}

void HistoryStore::deleteReplacement(const std::string& from) {
    db_->run("DELETE FROM replacements WHERE from_text=?", {from});
}

std::vector<Replacement> HistoryStore::replacements() const {
    std::vector<Replacement> rules;
    for (auto& row :
         db_->rows("SELECT from_text,to_text,is_regex FROM replacements ORDER BY id", 3)) {
        rules.push_back({std::move(row[0]), std::move(row[1]), row[2] == "1"});
    }
    return rules;
}

void HistoryStore::addSnippet(const std::string& trigger, const std::string& expansion) {
    db_->run("INSERT OR REPLACE INTO snippets(trigger,expansion) VALUES(?,?)",
             {trigger, expansion});
}

void HistoryStore::deleteSnippet(const std::string& trigger) {
    db_->run("DELETE FROM snippets WHERE trigger=?", {trigger});
}

std::vector<Snippet> HistoryStore::snippets() const {
    std::vector<Snippet> result;
    for (auto& row : db_->rows("SELECT trigger,expansion FROM snippets ORDER BY trigger", 2)) {
        result.push_back({std::move(row[0]), std::move(row[1])});
    }
    return result;
}

void HistoryStore::addToneProfile(const std::string& pattern, const std::string& tone,
                                  const std::string& matchKind) {
    db_->run("INSERT OR REPLACE INTO tone_profiles(bundle_pattern,tone,match_kind) VALUES(?,?,?)",
             {pattern, tone, matchKind});
}

void HistoryStore::addToneProfile(const std::string& bundlePattern, const std::string& tone) {
    addToneProfile(bundlePattern, tone, "app");
}

void HistoryStore::deleteToneProfile(const std::string& pattern, const std::string& matchKind) {
    db_->run("DELETE FROM tone_profiles WHERE bundle_pattern=? AND match_kind=?",
             {pattern, matchKind});
}

void HistoryStore::deleteToneProfile(const std::string& bundlePattern) {
    db_->run("DELETE FROM tone_profiles WHERE bundle_pattern=?", {bundlePattern});
}

std::vector<ToneProfile> HistoryStore::toneProfiles() const {
    std::vector<ToneProfile> profiles;
    for (auto& row : db_->rows("SELECT bundle_pattern,tone,COALESCE(match_kind,'app') FROM "
                               "tone_profiles ORDER BY bundle_pattern",
                               3)) {
        profiles.push_back({std::move(row[0]), std::move(row[1]), std::move(row[2])});
    }
    return profiles;
}

}  // namespace tevra
