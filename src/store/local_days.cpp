#include "store/local_days.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace tevra::LocalDays {

using namespace std::chrono;

Day dayOf(double secondsSinceEpoch) {
    const auto moment = static_cast<std::time_t>(std::floor(secondsSinceEpoch));
    std::tm local{};
    if (localtime_r(&moment, &local) == nullptr) {
        return floor<days>(sys_seconds(seconds(moment)));
    }
    return sys_days(year(local.tm_year + 1900) / month(static_cast<unsigned>(local.tm_mon + 1)) /
                    day(static_cast<unsigned>(local.tm_mday)));
}

std::optional<std::string> format(Day dayValue) {
    const year_month_day date(dayValue);
    const int y = static_cast<int>(date.year());
    if (!date.ok() || y < 0 || y > 9999) {
        return std::nullopt;
    }
    char text[11];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u", y, static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()));
    return std::string(text);
}

std::optional<Day> parse(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    auto number = [&](size_t from, size_t length) -> std::optional<int> {
        int value = 0;
        for (size_t i = from; i < from + length; ++i) {
            if (text[i] < '0' || text[i] > '9') {
                return std::nullopt;
            }
            value = value * 10 + (text[i] - '0');
        }
        return value;
    };
    const auto y = number(0, 4);
    const auto m = number(5, 2);
    const auto d = number(8, 2);
    if (!y || !m || !d) {
        return std::nullopt;
    }
    const year_month_day date(year(*y), month(static_cast<unsigned>(*m)),
                              day(static_cast<unsigned>(*d)));
    if (!date.ok()) {
        return std::nullopt;
    }
    return sys_days(date);
}

}  // namespace tevra::LocalDays
