#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace tevra {

// "2026-11-22T22:06:37Z": UTC, whole seconds (a fraction is dropped), suffix Z.
std::string iso8601UTC(std::chrono::system_clock::time_point time);

// Seconds since the Unix epoch of "2026-07-05T14:03", with optional seconds
// (":07", ":07.25"), then "Z", an offset ("+02:00", "-0530") or nothing for
// the process's local time. A blank may stand for the "T". Nothing else is
// taken, and the date must exist.
std::optional<double> parseISO8601(std::string_view text);

}  // namespace tevra
