#pragma once

#include <cstdint>
#include <string>

// The plain text forms of the insights figures.
namespace tevra::InsightsFormat {

// The decimal number with a blank between groups of three digits: "12 345".
std::string grouped(int64_t value);

// "59m", "1h", "1h 1m".
std::string hoursMinutes(int64_t minutes);

// Seconds with one decimal, "~1.5s"; "—" below one millisecond.
std::string speed(int64_t milliseconds);

}  // namespace tevra::InsightsFormat
