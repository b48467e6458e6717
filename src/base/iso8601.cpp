#include "base/iso8601.h"

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

}  // namespace tevra
