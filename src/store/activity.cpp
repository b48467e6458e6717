#include "store/activity.h"

namespace tevra::Activity {

using std::chrono::days;

std::vector<DayActivity> daily(const DayCounts& counts, LocalDays::Day today, int64_t dayCount) {
    std::vector<DayActivity> result;
    if (dayCount < 1) {
        return result;
    }
    result.reserve(static_cast<size_t>(dayCount));
    for (int64_t offset = dayCount - 1; offset >= 0; --offset) {
        const auto day = LocalDays::format(today - days(offset));
        if (!day) {
            continue;
        }
        const auto found = counts.find(*day);
        result.push_back({*day, found == counts.end() ? 0 : found->second});
    }
    return result;
}

ActivityStreaks streaks(const DayCounts& counts, LocalDays::Day today) {
    if (counts.empty()) {
        return {};
    }
    int64_t longest = 1;
    int64_t run = 1;
    // Map keys ascend as strings, which is date order for "yyyy-MM-dd".
    for (auto previous = counts.begin(), next = std::next(previous); next != counts.end();
         previous = next++) {
        const auto from = LocalDays::parse(previous->first);
        const auto to = LocalDays::parse(next->first);
        if (from && to && *to - *from == days(1)) {
            longest = std::max(longest, ++run);
        } else {
            run = 1;
        }
    }

    auto active = [&](LocalDays::Day day) {
        const auto key = LocalDays::format(day);
        return key && counts.contains(*key);
    };
    int64_t current = 0;
    LocalDays::Day day = today;
    if (!active(day)) {
        day -= days(1);
    }
    while (active(day)) {
        ++current;
        day -= days(1);
    }
    return {current, longest};
}

}  // namespace tevra::Activity
