#include "base/date_format.h"

#include <unicode/calendar.h>
#include <unicode/reldatefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <map>
#include <memory>

namespace tevra::DateFormat {
namespace {

icu::UnicodeString toUnicode(std::string_view s) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(s.data(), static_cast<int32_t>(s.size())));
}

icu::Locale localeOf(std::string_view name) {
    return name.empty() ? icu::Locale::getDefault() : icu::Locale(std::string(name).c_str());
}

}  // namespace

struct Pattern::Impl {
    std::unique_ptr<icu::SimpleDateFormat> formatter;
};

Pattern::Pattern(std::string_view pattern, std::string_view locale, std::string_view timeZone)
    : impl_(std::make_unique<Impl>()) {
    UErrorCode status = U_ZERO_ERROR;
    auto f = std::make_unique<icu::SimpleDateFormat>(toUnicode(pattern), localeOf(locale), status);
    if (U_FAILURE(status)) {
        return;
    }
    if (!timeZone.empty()) {
        f->adoptTimeZone(icu::TimeZone::createTimeZone(toUnicode(timeZone)));
    }
    impl_->formatter = std::move(f);
}

Pattern::~Pattern() = default;
Pattern::Pattern(Pattern&&) noexcept = default;
Pattern& Pattern::operator=(Pattern&&) noexcept = default;

std::string Pattern::format(double secondsSinceEpoch) {
    if (!impl_->formatter) {
        return {};
    }
    icu::UnicodeString out;
    impl_->formatter->format(static_cast<UDate>(secondsSinceEpoch * 1000.0), out);
    std::string text;
    out.toUTF8String(text);
    return text;
}

std::optional<double> Pattern::parseStrict(std::string_view text) {
    if (!impl_->formatter) {
        return std::nullopt;
    }
    impl_->formatter->setLenient(false);
    const icu::UnicodeString input = toUnicode(text);
    icu::ParsePosition position(0);
    const UDate date = impl_->formatter->parse(input, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != input.length()) {
        return std::nullopt;
    }
    return date / 1000.0;
}

std::string format(double secondsSinceEpoch, std::string_view pattern, std::string_view locale,
                   std::string_view timeZone) {
    return Pattern(pattern, locale, timeZone).format(secondsSinceEpoch);
}

std::optional<double> parseStrict(std::string_view text, std::string_view pattern,
                                  std::string_view locale, std::string_view timeZone) {
    return Pattern(pattern, locale, timeZone).parseStrict(text);
}

std::string relative(double secondsSinceEpoch, double now, std::string_view locale) {
    // Building a formatter loads locale data: one per locale and thread serves every call.
    thread_local std::map<std::string, std::unique_ptr<icu::RelativeDateTimeFormatter>, std::less<>>
        formatters;
    auto found = formatters.find(locale);
    if (found == formatters.end()) {
        UErrorCode status = U_ZERO_ERROR;
        auto made = std::make_unique<icu::RelativeDateTimeFormatter>(localeOf(locale), status);
        found =
            formatters.emplace(std::string(locale), U_SUCCESS(status) ? std::move(made) : nullptr)
                .first;
    }
    icu::RelativeDateTimeFormatter* relativeFormatter = found->second.get();
    if (relativeFormatter == nullptr) {
        return {};
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(
        icu::Calendar::createInstance(localeOf(locale), status));
    if (U_FAILURE(status)) {
        return {};
    }
    calendar->setTime(now * 1000.0, status);
    static constexpr std::pair<UCalendarDateFields, URelativeDateTimeUnit> kUnits[] = {
        {UCAL_YEAR, UDAT_REL_UNIT_YEAR},         {UCAL_MONTH, UDAT_REL_UNIT_MONTH},
        {UCAL_WEEK_OF_YEAR, UDAT_REL_UNIT_WEEK}, {UCAL_DATE, UDAT_REL_UNIT_DAY},
        {UCAL_HOUR_OF_DAY, UDAT_REL_UNIT_HOUR},  {UCAL_MINUTE, UDAT_REL_UNIT_MINUTE},
        {UCAL_SECOND, UDAT_REL_UNIT_SECOND},
    };
    // fieldDifference moves the calendar on by what it counted, so each unit
    // counts what the larger ones left over.
    int32_t amount = 0;
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    for (const auto& [field, relativeUnit] : kUnits) {
        amount = calendar->fieldDifference(secondsSinceEpoch * 1000.0, field, status);
        if (U_FAILURE(status)) {
            return {};
        }
        if (amount != 0) {
            unit = relativeUnit;
            break;
        }
    }
    icu::UnicodeString out;
    relativeFormatter->formatNumeric(amount, unit, out, status);
    std::string text;
    out.toUTF8String(text);
    return U_SUCCESS(status) ? text : std::string();
}

}  // namespace tevra::DateFormat
