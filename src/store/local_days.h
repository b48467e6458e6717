#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

// Local calendar days as the history table sees them. SQLite's 'localtime'
// modifier converts through the C library, so the day of a moment is taken
// the same way here: both follow the process's time zone (TZ), and a day
// string from the table and one computed here always agree.
namespace tevra::LocalDays {

using Day = std::chrono::sys_days;

// The local calendar day of a moment given in seconds since the Unix epoch.
Day dayOf(double secondsSinceEpoch);

// "yyyy-MM-dd"; nullopt for a year outside 0000-9999.
std::optional<std::string> format(Day day);

// Exactly "yyyy-MM-dd" naming a real date; nullopt for anything else.
std::optional<Day> parse(std::string_view text);

}  // namespace tevra::LocalDays
