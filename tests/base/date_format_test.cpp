#include "base/date_format.h"

#include <gtest/gtest.h>

#include "base/iso8601.h"

namespace tevra {
namespace {

constexpr double kNow = 1783252980;  // Sunday, 5 July 2026, 12:03 UTC

TEST(DateFormat, RelativeDatesCountInTheLargestUnitThatIsNotZero) {
    const struct {
        double offset;
        const char* text;
    } cases[] = {{-30, "30 seconds ago"},    {-7200, "2 hours ago"},
                 {-2 * 86400, "2 days ago"}, {-15 * 86400, "2 weeks ago"},
                 {3 * 3600, "in 3 hours"},   {-400 * 86400, "1 year ago"}};
    for (const auto& c : cases) {
        EXPECT_EQ(DateFormat::relative(kNow + c.offset, kNow, "en_US"), c.text) << c.offset;
    }
    EXPECT_EQ(DateFormat::relative(kNow - 7200, kNow, "pl_PL"), "2 godziny temu");
}

TEST(ISO8601, ParsesTimesWithAZoneOrInLocalTime) {
    const struct {
        const char* text;
        std::optional<double> seconds;
    } cases[] = {
        {"2026-07-05T12:03:00Z", kNow},
        {"2026-07-05T14:03:00+02:00", kNow},
        {"2026-07-05 06:33:00.5-0530", kNow + .5},
        {"2026-07-05T12:03Z", kNow},
        {"2026-06-31T12:03Z", std::nullopt},
        {"2026-07-05", std::nullopt},
        {"2026-07-05T12:03:00+2", std::nullopt},
        {"yesterday", std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(parseISO8601(c.text), c.seconds) << c.text;
    }
    EXPECT_TRUE(parseISO8601("2026-07-05T12:03"));
}

}  // namespace
}  // namespace tevra
