#include <gtest/gtest.h>

#include <ctime>

#include "store/history_store.h"
#include "store/insights_format.h"
#include "store/raw_database.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::RawDatabase;
using testing::TempDir;

// Auckland is thirteen hours ahead of UTC in March, so a local day and a UTC
// day differ for half of every day, and its summer time ends on 7 April.
class InsightsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(std::filesystem::exists("/usr/share/zoneinfo/Pacific/Auckland"))
            << "these tests need the time zone data of the tzdata package";
        if (const char* tz = std::getenv("TZ")) {
            savedTZ_ = tz;
        }
        setenv("TZ", "Pacific/Auckland", 1);
        tzset();
    }
    void TearDown() override {
        if (savedTZ_) {
            setenv("TZ", savedTZ_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

    // Seconds since the epoch of a local wall-clock time in 2024.
    static double local(int month, int day, int hour = 12, int minute = 0) {
        std::tm tm{};
        tm.tm_year = 2024 - 1900;
        tm.tm_mon = month - 1;
        tm.tm_mday = day;
        tm.tm_hour = hour;
        tm.tm_min = minute;
        tm.tm_isdst = -1;
        return static_cast<double>(std::mktime(&tm));
    }

    // A store whose clock stands at `now`, in a directory of its own.
    std::unique_ptr<HistoryStore> storeAt(double now) {
        const std::string path =
            (dir / ("db" + std::to_string(++stores_) + "/weft.sqlite")).string();
        return std::make_unique<HistoryStore>(path, [now] { return now; });
    }

    // Streaks with one dictation at noon on each March day given, seen on 14 March.
    ActivityStreaks streaksOn(std::initializer_list<int> marchDays, int today = 14) {
        auto store = storeAt(local(3, today, 18));
        for (int day : marchDays) {
            store->add(HistoryRow{.ts = local(3, day)});
        }
        return store->activityStreaks();
    }

    TempDir dir;

private:
    std::optional<std::string> savedTZ_;
    int stores_ = 0;
};

TEST_F(InsightsTest, AnEmptyHistoryIsAllZeros) {
    auto store = storeAt(local(3, 14));
    EXPECT_EQ(store->insightsSummary(), InsightsSummary{});
    EXPECT_TRUE(store->perAppUsage(8).empty());
    EXPECT_EQ(store->dailyActivity(3),
              (std::vector<DayActivity>{{"2024-03-12", 0}, {"2024-03-13", 0}, {"2024-03-14", 0}}));
    EXPECT_TRUE(store->dailyActivity(0).empty());
    EXPECT_TRUE(store->dailyActivity(-5).empty());
    EXPECT_EQ(store->activityStreaks(), ActivityStreaks{});
}

TEST_F(InsightsTest, SummaryIsArithmeticOverSums) {
    auto store = storeAt(local(3, 14));
    auto row = [](std::string raw, std::string polished, int64_t ms, int64_t sttMs, int64_t words) {
        return HistoryRow{.raw = raw,
                          .polished = polished,
                          .durationMs = ms,
                          .sttMs = sttMs,
                          .polishMs = 200,
                          .words = words};
    };
    // 100 words a minute and 500 words a minute: the speed is a ratio of the
    // sums (150 words in 1.1 minutes), not a mean of the two.
    store->add(row("a", "A.", 60000, 300, 100));
    store->add(row("b", "b", 6000, 301, 50));
    // Unknown text is no fix, and unknown timings leave the latency average alone.
    RawDatabase((dir / "db1/weft.sqlite").string())
        .exec("INSERT INTO history(ts,raw,words,duration_ms) VALUES(1,'c',0,0)");

    EXPECT_EQ(store->insightsSummary(), (InsightsSummary{.totalWords = 150,
                                                         .totalDictations = 3,
                                                         .avgWPM = 136,
                                                         .fixesApplied = 1,
                                                         .avgLatencyMs = 501,  // 500.5
                                                         .timeSavedMinutes = 3}))
        << "150 words: 3.75 minutes typing less 1 minute speaking, rounded";

    auto untimed = storeAt(local(3, 14));
    untimed->add(HistoryRow{.durationMs = 0, .words = 30});
    EXPECT_EQ(untimed->insightsSummary().avgWPM, 0) << "no recorded speech, no speed";
    untimed->add(HistoryRow{.durationMs = 1, .words = 0});
    EXPECT_EQ(untimed->insightsSummary().avgWPM, 1800000);
}

TEST_F(InsightsTest, PerAppUsageRanksApplicationsByWords) {
    auto store = storeAt(local(3, 14));
    for (int i = 0; i < 3; ++i) {
        store->add(HistoryRow{.app = "firefox", .words = 10});
    }
    store->add(HistoryRow{.app = "kate", .words = 50});
    store->add(HistoryRow{.app = "", .words = 1});

    EXPECT_EQ(store->perAppUsage(8),
              (std::vector<AppUsage>{{"kate", 1, 50}, {"firefox", 3, 30}, {"", 1, 1}}));
    EXPECT_EQ(store->perAppUsage(1), (std::vector<AppUsage>{{"kate", 1, 50}}));
    EXPECT_TRUE(store->perAppUsage(-1).empty());
}

TEST_F(InsightsTest, DaysAreLocalCalendarDaysInTheTableAndForToday) {
    // Half an hour into the 14th locally, still the 13th in UTC.
    auto store = storeAt(local(3, 14, 0, 30));
    store->add(HistoryRow{.ts = local(3, 11, 8)});  // the 10th in UTC
    store->add(HistoryRow{.ts = local(3, 13, 23, 30)});
    store->add(HistoryRow{.ts = local(3, 13, 0, 5)});
    store->add(HistoryRow{.ts = local(3, 14, 0, 10)});

    EXPECT_EQ(store->dailyActivity(4),
              (std::vector<DayActivity>{
                  {"2024-03-11", 1}, {"2024-03-12", 0}, {"2024-03-13", 2}, {"2024-03-14", 1}}));
    EXPECT_EQ(store->activityStreaks(), (ActivityStreaks{.current = 2, .longest = 2}));
}

TEST_F(InsightsTest, DailyActivityCoversEveryDayAcrossAClockChange) {
    auto store = storeAt(local(4, 20, 9));
    store->add(HistoryRow{.ts = local(4, 6, 23, 59)});
    store->add(HistoryRow{.ts = local(4, 7, 12)});  // clocks went back at 3:00

    const auto days = store->dailyActivity(120);
    ASSERT_EQ(days.size(), 120u);
    EXPECT_EQ(days.front().day, "2023-12-23");
    for (size_t i = 1; i < days.size(); ++i) {
        ASSERT_LT(days[i - 1].day, days[i].day);
        EXPECT_EQ(days[i].count, days[i].day == "2024-04-06" || days[i].day == "2024-04-07")
            << days[i].day;
    }
    EXPECT_EQ(days[105].day, "2024-04-06");
    EXPECT_EQ(days[106].day, "2024-04-07");
    EXPECT_EQ(days.back().day, "2024-04-20");
}

TEST_F(InsightsTest, StreaksRunOverConsecutiveDaysAndLiveUntilTheDayAfter) {
    // Monday 11, Tuesday 12, Thursday 14 March.
    EXPECT_EQ(streaksOn({11, 12, 14}), (ActivityStreaks{.current = 1, .longest = 2}));
    EXPECT_EQ(streaksOn({12, 13}), (ActivityStreaks{.current = 2, .longest = 2}))
        << "yesterday keeps the streak alive";
    EXPECT_EQ(streaksOn({14}), (ActivityStreaks{.current = 1, .longest = 1}));
    EXPECT_EQ(streaksOn({1, 2, 3, 4, 12}), (ActivityStreaks{.current = 0, .longest = 4}));
    EXPECT_EQ(streaksOn({1, 2, 3, 4, 12}, 13), (ActivityStreaks{.current = 1, .longest = 4}));

    // A leap day runs on into March.
    auto store = storeAt(local(3, 1, 20));
    store->add(HistoryRow{.ts = local(2, 28)});
    store->add(HistoryRow{.ts = local(2, 29)});
    store->add(HistoryRow{.ts = local(3, 1)});
    EXPECT_EQ(store->activityStreaks(), (ActivityStreaks{.current = 3, .longest = 3}));
}

TEST(InsightsFormat, GroupsThousandsAndWritesDurationsAndSpeeds) {
    const std::pair<int64_t, std::string> grouped[] = {
        {0, "0"}, {999, "999"}, {1000, "1 000"}, {1234567, "1 234 567"}, {-12345, "-12 345"}};
    for (const auto& [n, text] : grouped) {
        EXPECT_EQ(InsightsFormat::grouped(n), text);
    }
    const std::pair<int64_t, std::string> minutes[] = {
        {0, "0m"}, {59, "59m"}, {60, "1h"}, {61, "1h 1m"}, {1500, "25h"}};
    for (const auto& [n, text] : minutes) {
        EXPECT_EQ(InsightsFormat::hoursMinutes(n), text);
    }
    const std::pair<int64_t, std::string> speeds[] = {
        {0, "—"}, {-3, "—"}, {1, "~0.0s"}, {999, "~1.0s"}, {12345, "~12.3s"}};
    for (const auto& [ms, text] : speeds) {
        EXPECT_EQ(InsightsFormat::speed(ms), text);
    }
}

}  // namespace
}  // namespace tevra
