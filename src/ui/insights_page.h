#pragma once

#include <optional>
#include <string>
#include <vector>

#include "store/insights.h"

namespace tevra {

class HistoryStore;

// The Insights page's figures as data: read from the store at once, then
// laid out for drawing.
struct InsightsPage {
    static constexpr const char* title = "Insights";
    static constexpr const char* subtitle = "How much Tevra has typed for you \u2014 and how fast.";
    static constexpr const char* emptyTitle = "Your numbers are warming up.";
    static constexpr const char* emptyHint =
        "Dictate a few times and your stats \u2014 words, speed, streaks \u2014 appear here.";
    static constexpr const char* appsHeading = "Where you dictate";
    static constexpr const char* noApps = "No per-app data yet.";
    static constexpr int days = 120;
    static constexpr int sparklineDays = 30;
    static constexpr int appLimit = 8;

    InsightsSummary summary;
    std::vector<AppUsage> apps;
    std::vector<DayActivity> activity;  // oldest first, ending today
    ActivityStreaks streaks;

    // Everything zero and empty without a store.
    static InsightsPage read(const HistoryStore* store);
    bool isEmpty() const { return summary.totalDictations == 0; }

    struct Figure {
        std::string value;
        std::string label;
        std::string caption;
    };
    // The five figures, in the page's order.
    std::vector<Figure> figures() const;
    // "Last 30 days", or fewer.
    std::string sparklineCaption() const;
    std::vector<int64_t> sparkline() const;
    // "3 days", "1 day".
    static std::string dayCount(int64_t days);

    // The heat map: one column per week, Sunday first; the first column is
    // padded at the top with absent cells up to the oldest day's weekday.
    using Column = std::vector<std::optional<DayActivity>>;
    std::vector<Column> weekColumns() const;
    // A cell's shade: opacity of the ink colour for a quiet day, of the accent otherwise.
    struct Shade {
        bool accent = false;
        double opacity = 0;
    };
    static Shade shade(int64_t count, int64_t maxCount);
    int64_t maxCount() const;
    // 0 for Sunday; -1 when the day does not read as "yyyy-MM-dd".
    static int weekday(const std::string& day);
};

}  // namespace tevra
