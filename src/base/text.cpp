#include "base/text.h"

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cctype>
#include <vector>

namespace tevra::text {
namespace {

icu::UnicodeString toUnicode(std::string_view s) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(s.data(), static_cast<int32_t>(s.size())));
}

std::string toUtf8(const icu::UnicodeString& u) {
    std::string out;
    u.toUTF8String(out);
    return out;
}

// Decodes one code point at i (advancing i); malformed bytes decode as U+FFFD.
UChar32 nextScalar(std::string_view s, int32_t& i) {
    UChar32 c;
    U8_NEXT_OR_FFFD(reinterpret_cast<const uint8_t*>(s.data()), i, static_cast<int32_t>(s.size()),
                    c);
    return c;
}

UChar32 previousScalar(std::string_view s, int32_t& i) {
    UChar32 c;
    U8_PREV_OR_FFFD(reinterpret_cast<const uint8_t*>(s.data()), 0, i, c);
    return c;
}

// Grapheme boundaries of s as UTF-16 offsets into u.
std::vector<int32_t> graphemeBoundaries(const icu::UnicodeString& u) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> it(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    std::vector<int32_t> bounds;
    if (U_FAILURE(status)) {
        return bounds;
    }
    it->setText(u);
    for (int32_t p = it->first(); p != icu::BreakIterator::DONE; p = it->next()) {
        bounds.push_back(p);
    }
    return bounds;
}

}  // namespace

std::string trim(std::string_view s) {
    int32_t start = 0;
    const auto len = static_cast<int32_t>(s.size());
    while (start < len) {
        int32_t next = start;
        if (!u_isUWhiteSpace(nextScalar(s, next))) {
            break;
        }
        start = next;
    }
    int32_t end = len;
    while (end > start) {
        int32_t prev = end;
        if (!u_isUWhiteSpace(previousScalar(s, prev))) {
            break;
        }
        end = prev;
    }
    return std::string(s.substr(static_cast<size_t>(start), static_cast<size_t>(end - start)));
}

std::string trimBlanks(std::string_view s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos) {
        return {};
    }
    const auto last = s.find_last_not_of(" \t");
    return std::string(s.substr(first, last - first + 1));
}

std::size_t characterCount(std::string_view s) {
    if (s.empty()) {
        return 0;
    }
    const auto bounds = graphemeBoundaries(toUnicode(s));
    return bounds.empty() ? 0 : bounds.size() - 1;
}

std::string prefixCharacters(std::string_view s, std::size_t n) {
    // Stops after n boundaries: the head of a long document costs what the
    // head costs, not what the document costs.
    const auto u = toUnicode(s);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> it(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) {
        return std::string(s);
    }
    it->setText(u);
    int32_t end = it->first();
    for (std::size_t i = 0; i < n; ++i) {
        end = it->next();
        if (end == icu::BreakIterator::DONE) {
            return std::string(s);
        }
    }
    if (it->next() == icu::BreakIterator::DONE) {
        return std::string(s);  // exactly n characters: the text as given
    }
    return toUtf8(u.tempSubString(0, end));
}

std::string suffixCharacters(std::string_view s, std::size_t n) {
    const auto u = toUnicode(s);
    const auto bounds = graphemeBoundaries(u);
    if (bounds.size() <= n + 1) {
        return std::string(s);
    }
    return toUtf8(u.tempSubString(bounds[bounds.size() - 1 - n]));
}

std::string lowercase(std::string_view s) {
    auto u = toUnicode(s);
    u.toLower(icu::Locale::getRoot());
    return toUtf8(u);
}

std::string uppercase(std::string_view s) {
    auto u = toUnicode(s);
    u.toUpper(icu::Locale::getRoot());
    return toUtf8(u);
}

std::string nfc(std::string_view s) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) {
        return std::string(s);
    }
    const auto normalized = normalizer->normalize(toUnicode(s), status);
    return U_FAILURE(status) ? std::string(s) : toUtf8(normalized);
}

std::string capitalizeFirst(std::string_view s) {
    if (s.empty()) {
        return {};
    }
    const auto u = toUnicode(s);
    const auto bounds = graphemeBoundaries(u);
    const int32_t firstEnd = bounds.size() > 1 ? bounds[1] : u.length();
    icu::UnicodeString head = u.tempSubString(0, firstEnd);
    head.toUpper(icu::Locale::getRoot());
    return toUtf8(head) + toUtf8(u.tempSubString(firstEnd));
}

std::string blankNonAlphanumerics(std::string_view s) {
    constexpr uint32_t kKept = U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK;
    std::string out;
    out.reserve(s.size());
    const auto len = static_cast<int32_t>(s.size());
    for (int32_t i = 0; i < len;) {
        const int32_t start = i;
        const UChar32 c = nextScalar(s, i);
        if (c == ' ' || (U_GET_GC_MASK(c) & kKept) != 0) {
            out.append(s.substr(static_cast<size_t>(start), static_cast<size_t>(i - start)));
        } else {
            out.push_back(' ');
        }
    }
    return out;
}

std::size_t countSpaceSeparated(std::string_view s) {
    std::size_t count = 0;
    bool inPiece = false;
    for (char c : s) {
        if (c == ' ') {
            inPiece = false;
        } else if (!inPiece) {
            inPiece = true;
            ++count;
        }
    }
    return count;
}

bool isValidUTF8(std::string_view s) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(s.data());
    const auto len = static_cast<int32_t>(s.size());
    for (int32_t i = 0; i < len;) {
        UChar32 c;
        U8_NEXT(bytes, i, len, c);
        if (c < 0) {
            return false;
        }
    }
    return true;
}

std::optional<char32_t> lastScalar(std::string_view s) {
    if (s.empty()) {
        return std::nullopt;
    }
    auto i = static_cast<int32_t>(s.size());
    return static_cast<char32_t>(previousScalar(s, i));
}

bool containsMatch(std::string_view s, std::string_view pattern) {
    auto re = Regex::compile(pattern);
    return re && re->matches(s);
}

struct Regex::Impl {
    std::unique_ptr<icu::RegexPattern> pattern;
};

Regex::Regex(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;
Regex::~Regex() = default;

std::optional<Regex> Regex::compile(std::string_view pattern, bool caseInsensitive) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    std::unique_ptr<icu::RegexPattern> compiled(icu::RegexPattern::compile(
        toUnicode(pattern), caseInsensitive ? UREGEX_CASE_INSENSITIVE : 0, parseError, status));
    if (U_FAILURE(status) || !compiled) {
        return std::nullopt;
    }
    auto impl = std::make_unique<Impl>();
    impl->pattern = std::move(compiled);
    return Regex(std::move(impl));
}

std::string Regex::replaceAll(std::string_view s, std::string_view replacementTemplate) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto input = toUnicode(s);
    std::unique_ptr<icu::RegexMatcher> m(impl_->pattern->matcher(input, status));
    if (U_FAILURE(status)) {
        return std::string(s);
    }
    const auto result = m->replaceAll(toUnicode(replacementTemplate), status);
    if (U_FAILURE(status)) {
        return std::string(s);
    }
    return toUtf8(result);
}

bool Regex::matches(std::string_view s) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto input = toUnicode(s);
    std::unique_ptr<icu::RegexMatcher> m(impl_->pattern->matcher(input, status));
    return U_SUCCESS(status) && m->find(status) && U_SUCCESS(status);
}

std::string Regex::replaceFirstAtStart(std::string_view s, std::string_view replacement) const {
    UErrorCode status = U_ZERO_ERROR;
    const auto input = toUnicode(s);
    std::unique_ptr<icu::RegexMatcher> m(impl_->pattern->matcher(input, status));
    if (U_FAILURE(status) || !m->find(status) || m->start(status) != 0) {
        return std::string(s);
    }
    const int32_t end = m->end(status);
    return std::string(replacement) + toUtf8(input.tempSubString(end));
}

std::string Regex::escapePattern(std::string_view literal) {
    // ICU treats a backslash before any ASCII punctuation as a literal; letters
    // and digits after a backslash are escapes of their own, so they stay bare.
    std::string out;
    out.reserve(literal.size() * 2);
    for (char c : literal) {
        const auto uc = static_cast<unsigned char>(c);
        if (uc < 0x80 && std::ispunct(uc)) {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out;
}

std::string Regex::escapeTemplate(std::string_view literal) {
    std::string out;
    out.reserve(literal.size() + 4);
    for (char c : literal) {
        if (c == '\\' || c == '$') {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    return out;
}

}  // namespace tevra::text
