#include "store/insights_format.h"

#include <charconv>

namespace tevra::InsightsFormat {

std::string grouped(int64_t value) {
    const std::string digits = std::to_string(value);
    const size_t start = value < 0 ? 1 : 0;
    std::string result = digits.substr(0, start);
    for (size_t i = start; i < digits.size(); ++i) {
        if (i > start && (digits.size() - i) % 3 == 0) {
            result += ' ';
        }
        result += digits[i];
    }
    return result;
}

std::string hoursMinutes(int64_t minutes) {
    // Appended piece by piece: GCC 12 warns falsely (-Wrestrict) on to_string() + "m".
    std::string result;
    if (minutes < 60) {
        result.append(std::to_string(minutes)).append("m");
        return result;
    }
    result.append(std::to_string(minutes / 60)).append("h");
    if (const int64_t rest = minutes % 60; rest != 0) {
        result.append(" ").append(std::to_string(rest)).append("m");
    }
    return result;
}

std::string speed(int64_t milliseconds) {
    if (milliseconds < 1) {
        return "—";
    }
    // to_chars, unlike printf, ignores the process locale: always a full stop.
    char number[32];
    const auto end =
        std::to_chars(number, number + sizeof number, static_cast<double>(milliseconds) / 1000.0,
                      std::chars_format::fixed, 1)
            .ptr;
    return std::string("~").append(number, end).append("s");
}

}  // namespace tevra::InsightsFormat
