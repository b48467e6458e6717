#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "polish/mode.h"
#include "polish/replacement.h"
#include "polish/tone_profile.h"
#include "store/activity.h"
#include "store/history_row.h"
#include "store/insights.h"
#include "store/pipeline_store.h"
#include "store/session_records.h"

namespace tevra {

class SqliteDatabase;
class SqliteStatement;

struct HistoryStats {
    int64_t dictations = 0;
    int64_t words = 0;
    int64_t avgLatencyMs = 0;

    bool operator==(const HistoryStats&) const = default;
};

// The one database: dictation history, vocabulary, tones, voices and the
// notetaker's sessions, in a single SQLite file in WAL mode.
//
// Only construction can fail. After that a write that fails is dropped and a
// read that fails returns an empty result: the store is housekeeping, and the
// caller always goes on. Every operation runs its database work synchronously
// on one serial queue, so any thread may call any operation.
class HistoryStore : public PipelineStore {
public:
    static constexpr int64_t maxHistoryRows = 10000;
    static constexpr int64_t maxSessions = 2000;

    // Seconds since the Unix epoch; decides which local day is "today".
    using WallClock = std::function<double()>;

    // Creates the parent directory, opens or creates the file, brings the
    // schema up to date and makes the file and its WAL companions owner-only.
    // Throws StoreDamagedError when what is there is not a database or its
    // tables cannot be brought up to date, StoreOpenError when the file cannot
    // be opened now (a directory, no permission, busy), and the file-system
    // error when the directory cannot be made.
    explicit HistoryStore(const std::string& dbPath, WallClock wallClock = {});
    ~HistoryStore() override;
    HistoryStore(const HistoryStore&) = delete;
    HistoryStore& operator=(const HistoryStore&) = delete;

    // History. Each add keeps only the newest maxHistoryRows rows by ts.
    void add(const HistoryRow& row) override;
    std::vector<HistoryRow> recent(int64_t limit) const;  // newest first; negative: all
    HistoryStats stats() const;

    // Dictionary: exact phrases, each at most once.
    void addDictionary(const std::string& phrase);
    void deleteDictionary(const std::string& phrase);
    std::vector<std::string> dictionary() const override;  // alphabetical

    // Replacements, applied in the order they were added; one `from` may repeat.
    void addReplacement(const std::string& from, const std::string& to, bool isRegex);
    void deleteReplacement(const std::string& from);  // every rule with that `from`
    std::vector<Replacement> replacements() const override;

    // Snippets: one expansion per trigger, the last one added wins.
    void addSnippet(const std::string& trigger, const std::string& expansion);
    void deleteSnippet(const std::string& trigger);
    std::vector<Snippet> snippets() const override;  // by trigger

    // Tones. A pattern is unique across both match kinds: adding it again
    // replaces the row whatever its kind.
    void addToneProfile(const std::string& pattern, const std::string& tone,
                        const std::string& matchKind);
    void addToneProfile(const std::string& bundlePattern, const std::string& tone);  // "app"
    void deleteToneProfile(const std::string& pattern, const std::string& matchKind);
    void deleteToneProfile(const std::string& bundlePattern);
    std::vector<ToneProfile> toneProfiles() const;  // by pattern

    // Voices, one per slot.
    void saveMode(const Mode& mode);
    std::vector<Mode> modes() const;               // by slot, disabled ones included
    std::optional<Mode> mode(int64_t slot) const;  // only an enabled mode
    void resetModesToDefaults();
    // A formal voice writing in `language`, on the lowest free slot.
    Mode addFormalLanguageMode(const std::string& language);
    // Removes a voice the user added; the built-in slots stay.
    void deleteMode(int64_t slot);

    // Fills each of modes, tones and dictionary with its defaults if it is empty.
    void seedDefaultsIfEmpty();

    // Insights, computed from the history on demand. Days are local calendar
    // days in the process's time zone.
    InsightsSummary insightsSummary() const;
    std::vector<AppUsage> perAppUsage(int64_t limit) const;      // most words first
    std::vector<DayActivity> dailyActivity(int64_t days) const;  // ending today, oldest first
    ActivityStreaks activityStreaks() const;

    // The notetaker's sessions, kept to the newest maxSessions by startedAt.
    // saveSession ignores the session's id and returns the new one, or 0 when
    // nothing was written. A stored array that no longer decodes reads as
    // empty, so a damaged session still lists with its other fields.
    int64_t saveSession(const NoteSession& session);
    std::vector<NoteSession> recentSessions(int64_t limit) const;  // newest first
    std::optional<NoteSession> session(int64_t id) const;
    void deleteSession(int64_t id);

private:
    static NoteSession sessionRow(const SqliteStatement& statement);
    Activity::DayCounts localDayCounts() const;
    LocalDays::Day today() const;

    std::unique_ptr<SqliteDatabase> db_;
    WallClock wallClock_;
};

}  // namespace tevra
