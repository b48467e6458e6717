#include "ui/insights_page.h"

#include <algorithm>
#include <charconv>

#include "store/history_store.h"
#include "store/insights_format.h"

namespace tevra {

InsightsPage InsightsPage::read(const HistoryStore* store) {
    InsightsPage page;
    if (store) {
        page.summary = store->insightsSummary();
        page.apps = store->perAppUsage(appLimit);
        page.activity = store->dailyActivity(days);
        page.streaks = store->activityStreaks();
    }
    return page;
}

std::string InsightsPage::dayCount(int64_t count) {
    return std::to_string(count) + (count == 1 ? " day" : " days");
}

std::vector<InsightsPage::Figure> InsightsPage::figures() const {
    using namespace InsightsFormat;
    return {{grouped(summary.totalWords), "words dictated", ""},
            {std::to_string(summary.avgWPM), "words per minute", ""},
            {hoursMinutes(summary.timeSavedMinutes), "time saved typing", ""},
            {grouped(summary.fixesApplied), "fixes applied",
             "auto-corrections Tevra made as you spoke"},
            {speed(summary.avgLatencyMs), "avg speed", "voice to typed text, end to end"}};
}

std::vector<int64_t> InsightsPage::sparkline() const {
    const std::size_t count = std::min<std::size_t>(activity.size(), sparklineDays);
    std::vector<int64_t> values;
    for (auto it = activity.end() - static_cast<std::ptrdiff_t>(count); it != activity.end();
         ++it) {
        values.push_back(it->count);
    }
    return values;
}

std::string InsightsPage::sparklineCaption() const {
    return "Last " + std::to_string(std::min<std::size_t>(activity.size(), sparklineDays)) +
           " days";
}

int InsightsPage::weekday(const std::string& day) {
    int year = 0;
    unsigned month = 0;
    unsigned date = 0;
    if (day.size() != 10 || std::from_chars(day.data(), day.data() + 4, year).ec != std::errc() ||
        std::from_chars(day.data() + 5, day.data() + 7, month).ec != std::errc() ||
        std::from_chars(day.data() + 8, day.data() + 10, date).ec != std::errc() || month < 1 ||
        month > 12 || date < 1 || date > 31) {
        return -1;
    }
    // Days since 1970-01-01 (a Thursday) by the civil calendar.
    const int y = year - (month <= 2 ? 1 : 0);
    const int era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yearOfEra = static_cast<unsigned>(y - era * 400);
    const unsigned dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + date - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    const long long days = static_cast<long long>(era) * 146097 + dayOfEra - 719468;
    return static_cast<int>(((days % 7) + 7 + 4) % 7);
}

std::vector<InsightsPage::Column> InsightsPage::weekColumns() const {
    std::vector<Column> columns;
    if (activity.empty()) {
        return columns;
    }
    Column column(static_cast<std::size_t>(std::max(0, weekday(activity.front().day))));
    for (const DayActivity& day : activity) {
        column.emplace_back(day);
        if (column.size() == 7) {
            columns.push_back(std::move(column));
            column.clear();
        }
    }
    if (!column.empty()) {
        columns.push_back(std::move(column));
    }
    return columns;
}

int64_t InsightsPage::maxCount() const {
    int64_t most = 1;
    for (const DayActivity& day : activity) {
        most = std::max(most, day.count);
    }
    return most;
}

InsightsPage::Shade InsightsPage::shade(int64_t count, int64_t maxCount) {
    if (count <= 0) {
        return {false, 0.06};
    }
    const double f =
        static_cast<double>(count) / static_cast<double>(std::max<int64_t>(maxCount, 1));
    if (f < 0.25) {
        return {true, 0.32};
    }
    if (f < 0.5) {
        return {true, 0.52};
    }
    if (f < 0.75) {
        return {true, 0.74};
    }
    return {true, 1.0};
}

}  // namespace tevra
