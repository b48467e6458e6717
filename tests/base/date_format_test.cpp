#include "base/date_format.h"

#include <gtest/gtest.h>

#include "base/iso8601.h"

namespace tevra {
namespace {

TEST(DateFormat, StrictParsingTakesOnlyRealDatesWrittenWhole) {
    const struct {
        const char* text;
        const char* pattern;
        std::optional<double> seconds;
    } cases[] = {
        {"2026-07-05", "yyyy-MM-dd", 1783209600},
        {"2026-02-30", "yyyy-MM-dd", std::nullopt},
        {"2026-13-01", "yyyy-MM-dd", std::nullopt},
        {"2026-07-05x", "yyyy-MM-dd", std::nullopt},
        {"05.07.2026", "yyyy-MM-dd", std::nullopt},
        {"23:59", "HH:mm", 86340},
        {"24:00", "HH:mm", std::nullopt},
        {"12:60", "HH:mm", std::nullopt},
        {"7pm", "HH:mm", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(DateFormat::parseStrict(c.text, c.pattern, "en_US_POSIX", "UTC"), c.seconds)
            << c.text;
    }
    EXPECT_EQ(
        DateFormat::format(1783252980, "EEEE, d MMMM yyyy 'at' HH:mm", "en_US", "America/New_York"),
        "Sunday, 5 July 2026 at 08:03");
}

TEST(DateFormat, RelativeDatesCountInTheLargestUnitThatIsNotZero) {
    constexpr double now = 1783252980;
    const struct {
        double offset;
        const char* text;
    } cases[] = {
        {-30, "30 seconds ago"},      {-7200, "2 hours ago"},   {-2 * 86400, "2 days ago"},
        {-15 * 86400, "2 weeks ago"}, {3 * 3600, "in 3 hours"}, {-400 * 86400, "1 year ago"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(DateFormat::relative(now + c.offset, now, "en_US"), c.text) << c.offset;
    }
}

TEST(ISO8601, ParsesTimesWithAZoneOrInLocalTime) {
    const struct {
        const char* text;
        std::optional<double> seconds;
    } cases[] = {
        {"2026-07-05T12:03:00Z", 1783252980},         {"2026-07-05T14:03:00+02:00", 1783252980},
        {"2026-07-05 06:33:00.5-0530", 1783252980.5}, {"2026-07-05T12:03Z", 1783252980},
        {"2026-06-31T12:03Z", std::nullopt},          {"2026-07-05", std::nullopt},
        {"2026-07-05T12:03:00+2", std::nullopt},      {"yesterday", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseISO8601(c.text), c.seconds) << c.text;
    }
    EXPECT_TRUE(parseISO8601("2026-07-05T12:03"));
}

}  // namespace
}  // namespace tevra
