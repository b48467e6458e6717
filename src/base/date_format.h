#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

// Calendar dates through ICU, with the same patterns ("d MMM, HH:mm",
// "EEEE, d MMMM yyyy") and the same locale data the texts are written for.
// Times are seconds since the Unix epoch. An empty locale is the user's (from
// LANG and LC_*), an empty time zone the process's (TZ, else /etc/localtime).
namespace tevra::DateFormat {

// One pattern in one locale and time zone, built once for many dates. Not to
// be shared between threads: ICU's formatter keeps a calendar that it moves.
class Pattern {
public:
    Pattern(std::string_view pattern, std::string_view locale, std::string_view timeZone = {});
    ~Pattern();
    Pattern(Pattern&&) noexcept;
    Pattern& operator=(Pattern&&) noexcept;

    std::string format(double secondsSinceEpoch);
    std::optional<double> parseStrict(std::string_view text);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The moment written with an ICU date pattern.
std::string format(double secondsSinceEpoch, std::string_view pattern, std::string_view locale,
                   std::string_view timeZone = {});

// The moment that the whole text names under the pattern, with lenient parsing
// off: "2026-02-30" is no date, and nothing may follow the pattern.
std::optional<double> parseStrict(std::string_view text, std::string_view pattern,
                                  std::string_view locale, std::string_view timeZone = {});

// "2 hours ago", "in 3 days": the difference in the largest calendar unit
// that is not zero (years, months, weeks, days, hours, minutes, seconds), in
// the language of the locale.
std::string relative(double secondsSinceEpoch, double now, std::string_view locale = {});

}  // namespace tevra::DateFormat
