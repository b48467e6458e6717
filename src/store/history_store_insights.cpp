#include <algorithm>
#include <cmath>

#include "store/history_store.h"
#include "store/sqlite_database.h"

namespace tevra {

namespace {

// Typing against speaking, in words per minute.
constexpr double kTypistWPM = 40.0;
constexpr double kSpeakerWPM = 150.0;

// Nearest integer, halves away from zero.
int64_t rounded(double value) {
    return static_cast<int64_t>(std::llround(value));
}

}  // namespace

InsightsSummary HistoryStore::insightsSummary() const {
    return db_->sync([&](sqlite3* handle) {
        SqliteStatement statement(handle,
                                  "SELECT COALESCE(SUM(words),0),\n"
                                  "       COUNT(*),\n"
                                  "       COALESCE(SUM(duration_ms),0),\n"
                                  "       COALESCE(SUM(CASE WHEN polished <> raw THEN 1 ELSE 0 "
                                  "END),0),\n"
                                  "       COALESCE(AVG(stt_ms+polish_ms+insert_ms),0)\n"
                                  "FROM history");
        if (!statement.prepared() || !statement.stepRow()) {
            return InsightsSummary{};
        }
        const int64_t words = statement.int64(0);
        const int64_t durationMs = statement.int64(2);
        // A ratio of sums: long dictations weigh more than short ones.
        const int64_t wpm =
            durationMs < 1 ? 0 : rounded(static_cast<double>(words) / (durationMs / 60000.0));
        const double saved = words / kTypistWPM - words / kSpeakerWPM;
        return InsightsSummary{
            .totalWords = words,
            .totalDictations = statement.int64(1),
            .avgWPM = wpm,
            .fixesApplied = statement.int64(3),
            .avgLatencyMs = rounded(statement.real(4)),
            .timeSavedMinutes = std::max<int64_t>(0, rounded(saved)),
        };
    });
}

std::vector<AppUsage> HistoryStore::perAppUsage(int64_t limit) const {
    std::vector<AppUsage> usage;
    const std::string sql =
        "SELECT app, COUNT(*), COALESCE(SUM(words),0)\n"
        "FROM history GROUP BY app ORDER BY SUM(words) DESC LIMIT " +
        std::to_string(std::max<int64_t>(limit, 0));
    for (auto& row : db_->rows(sql, 3)) {
        usage.push_back({std::move(row[0]), parseDecimal(row[1]).value_or(0),
                         parseDecimal(row[2]).value_or(0)});
    }
    return usage;
}

Activity::DayCounts HistoryStore::localDayCounts() const {
    Activity::DayCounts counts;
    for (auto& row : db_->rows("SELECT date(ts, 'unixepoch', 'localtime'), COUNT(*)\n"
                               "FROM history GROUP BY 1",
                               2)) {
        if (!row[0].empty()) {
            counts[std::move(row[0])] = parseDecimal(row[1]).value_or(0);
        }
    }
    return counts;
}

LocalDays::Day HistoryStore::today() const {
    return LocalDays::dayOf(wallClock_());
}

std::vector<DayActivity> HistoryStore::dailyActivity(int64_t days) const {
    if (days < 1) {
        return {};
    }
    return Activity::daily(localDayCounts(), today(), days);
}

ActivityStreaks HistoryStore::activityStreaks() const {
    return Activity::streaks(localDayCounts(), today());
}

}  // namespace tevra
