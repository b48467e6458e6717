#pragma once

#include <cstdint>
#include <string>

namespace tevra {

// What dictation has done for the user, derived from the history on demand.
struct InsightsSummary {
    int64_t totalWords = 0;
    int64_t totalDictations = 0;
    int64_t avgWPM = 0;        // words per minute of recorded speech
    int64_t fixesApplied = 0;  // rows whose polished text differs from the raw
    int64_t avgLatencyMs = 0;
    int64_t timeSavedMinutes = 0;

    bool operator==(const InsightsSummary&) const = default;
};

struct AppUsage {
    std::string app;
    int64_t dictations = 0;
    int64_t words = 0;

    bool operator==(const AppUsage&) const = default;
};

// Dictations on one local calendar day, the day as "yyyy-MM-dd".
struct DayActivity {
    std::string day;
    int64_t count = 0;

    bool operator==(const DayActivity&) const = default;
};

// Runs of consecutive local days with at least one dictation.
struct ActivityStreaks {
    int64_t current = 0;
    int64_t longest = 0;

    bool operator==(const ActivityStreaks&) const = default;
};

}  // namespace tevra
