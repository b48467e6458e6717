#include "base/iso8601.h"

#include <cctype>
#include <cmath>
#include <ctime>

namespace tevra {

std::string iso8601UTC(std::chrono::system_clock::time_point time) {
    // floor, not a cast: a moment before 1970 still belongs to the second it began in.
    const std::time_t seconds =
        std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
    std::tm utc{};
    ::gmtime_r(&seconds, &utc);
    char text[32];
    const size_t n = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
    return std::string(text, n);
}

namespace {

// Reads exactly `digits` decimal digits at `at`, moving past them.
std::optional<int> number(std::string_view text, size_t& at, size_t digits) {
    if (at + digits > text.size()) {
        return std::nullopt;
    }
    int value = 0;
    for (size_t i = 0; i < digits; ++i) {
        const char c = text[at + i];
        if (!std::isdigit(static_cast<unsigned char>(c))) {
            return std::nullopt;
        }
        value = value * 10 + (c - '0');
    }
    at += digits;
    return value;
}

bool take(std::string_view text, size_t& at, char c) {
    if (at < text.size() && text[at] == c) {
        ++at;
        return true;
    }
    return false;
}

}  // namespace

std::optional<double> parseISO8601(std::string_view text) {
    size_t at = 0;
    const auto year = number(text, at, 4);
    const bool dash1 = take(text, at, '-');
    const auto month = number(text, at, 2);
    const bool dash2 = take(text, at, '-');
    const auto day = number(text, at, 2);
    const bool separator = take(text, at, 'T') || take(text, at, ' ');
    const auto hour = number(text, at, 2);
    const bool colon = take(text, at, ':');
    const auto minute = number(text, at, 2);
    if (!year || !dash1 || !month || !dash2 || !day || !separator || !hour || !colon || !minute) {
        return std::nullopt;
    }
    int second = 0;
    double fraction = 0;
    if (take(text, at, ':')) {
        const auto s = number(text, at, 2);
        if (!s) {
            return std::nullopt;
        }
        second = *s;
        if (take(text, at, '.')) {
            double scale = 0.1;
            const size_t start = at;
            while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at]))) {
                fraction += (text[at++] - '0') * scale;
                scale /= 10;
            }
            if (at == start) {
                return std::nullopt;
            }
        }
    }
    if (*month < 1 || *month > 12 || *day < 1 || *day > 31 || *hour > 23 || *minute > 59 ||
        second > 59) {
        return std::nullopt;
    }
    std::tm fields{};
    fields.tm_year = *year - 1900;
    fields.tm_mon = *month - 1;
    fields.tm_mday = *day;
    fields.tm_hour = *hour;
    fields.tm_min = *minute;
    fields.tm_sec = second;
    std::tm asGiven = fields;

    std::time_t moment = 0;
    if (at == text.size()) {
        fields.tm_isdst = -1;
        moment = ::mktime(&fields);
    } else if (text[at] == 'Z' && at + 1 == text.size()) {
        moment = ::timegm(&fields);
    } else if (text[at] == '+' || text[at] == '-') {
        const char sign = text[at++];
        const auto offsetHours = number(text, at, 2);
        take(text, at, ':');
        const auto offsetMinutes = number(text, at, 2);
        if (!offsetHours || !offsetMinutes || at != text.size() || *offsetHours > 23 ||
            *offsetMinutes > 59) {
            return std::nullopt;
        }
        const int offset = (*offsetHours * 60 + *offsetMinutes) * 60;
        moment = ::timegm(&fields) - (sign == '+' ? offset : -offset);
    } else {
        return std::nullopt;
    }
    // mktime and timegm normalise 31 June into 1 July: such a date does not exist.
    if (fields.tm_mday != asGiven.tm_mday || fields.tm_mon != asGiven.tm_mon) {
        return std::nullopt;
    }
    return static_cast<double>(moment) + fraction;
}

}  // namespace tevra
