#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "store/insights.h"
#include "store/local_days.h"

// Day-by-day activity over the dictation counts of local calendar days.
namespace tevra::Activity {

// Day string ("yyyy-MM-dd") to the number of dictations on that day.
using DayCounts = std::map<std::string, int64_t>;

// One entry per day of the `days` days ending today, oldest first, with 0 for
// a day without dictations. Empty when days is below 1.
std::vector<DayActivity> daily(const DayCounts& counts, LocalDays::Day today, int64_t days);

// The longest run of consecutive days, and the run that ends today or, when
// today has nothing yet, yesterday: a streak lives until the end of the day
// after the last dictation.
ActivityStreaks streaks(const DayCounts& counts, LocalDays::Day today);

}  // namespace tevra::Activity
