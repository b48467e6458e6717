#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

// UTF-8 text operations backed by ICU. "Character" means a user-perceived
// character (an extended grapheme cluster) throughout.
namespace tevra::text {

// Strips Unicode White_Space (blanks, tabs, line ends, NBSP, ...) from both ends.
std::string trim(std::string_view s);

// Strips only U+0020 and U+0009 from both ends.
std::string trimBlanks(std::string_view s);

std::size_t characterCount(std::string_view s);
std::string prefixCharacters(std::string_view s, std::size_t n);
std::string suffixCharacters(std::string_view s, std::size_t n);

// Full case mappings of the root locale: "ß" upper-cases to "SS".
std::string lowercase(std::string_view s);
std::string uppercase(std::string_view s);

// Canonical composition (NFC): a base letter and its combining marks become
// the precomposed character where one exists.
std::string nfc(std::string_view s);

// The first character upper-cased, the rest unchanged.
std::string capitalizeFirst(std::string_view s);

// Every Unicode scalar that is neither a letter, a mark, a digit nor U+0020
// becomes U+0020: "call the bank!" gives "call the bank ".
std::string blankNonAlphanumerics(std::string_view s);

// Pieces between U+0020 characters, empty pieces not counted. Line breaks do
// not separate.
std::size_t countSpaceSeparated(std::string_view s);

// Whether the bytes are well-formed UTF-8 (no overlong forms, surrogates or
// truncated sequences).
bool isValidUTF8(std::string_view s);

// The last Unicode scalar value, or nullopt for an empty string.
std::optional<char32_t> lastScalar(std::string_view s);

// Whether the text contains a match of an ICU pattern (case-sensitive).
bool containsMatch(std::string_view s, std::string_view pattern);

// A compiled ICU regular expression. Templates use $1 for groups and \ to escape.
class Regex {
public:
    // nullopt when the pattern does not compile.
    static std::optional<Regex> compile(std::string_view pattern, bool caseInsensitive = false);

    std::string replaceAll(std::string_view s, std::string_view replacementTemplate) const;
    bool matches(std::string_view s) const;  // a match anywhere in s
    // Replaces the first match if it starts at offset 0; otherwise returns s unchanged.
    std::string replaceFirstAtStart(std::string_view s, std::string_view replacement) const;

    // Escapes every character that has a meaning in a pattern.
    static std::string escapePattern(std::string_view literal);
    // Escapes "$" and "\" so that a template inserts the text as written.
    static std::string escapeTemplate(std::string_view literal);

    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;
    ~Regex();

private:
    struct Impl;
    explicit Regex(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace tevra::text
