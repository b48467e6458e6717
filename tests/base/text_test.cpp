#include "base/text.h"

#include <gtest/gtest.h>

#include "base/http_client.h"

namespace tevra {
namespace {

TEST(Text, TrimsUnicodeWhiteSpaceAndCountsGraphemeClusters) {
    EXPECT_EQ(text::trim(" \t\r\n\u00a0\u2028hello world\u3000\n"), "hello world");
    EXPECT_EQ(text::trim("\u200bzero width stays\u200b"), "\u200bzero width stays\u200b");
    EXPECT_EQ(text::trimBlanks(" \t a\n \t"), "a\n");

    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // one emoji
    const std::string s = family + "e\u0301xy";                               // e + combining
    EXPECT_EQ(text::characterCount(s), 4u);
    EXPECT_EQ(text::prefixCharacters(s, 2), family + "e\u0301");
    EXPECT_EQ(text::suffixCharacters(s, 3), "e\u0301xy");
    EXPECT_EQ(text::prefixCharacters("abc", 10), "abc");
    EXPECT_EQ(text::suffixCharacters("", 3), "");

    EXPECT_EQ(text::lowercase("ŁÓDŹ İ"), "łódź i\u0307");
    EXPECT_EQ(text::uppercase("straße"), "STRASSE");
    EXPECT_EQ(text::capitalizeFirst("ﬁne"), "FIne");
    EXPECT_EQ(text::countSpaceSeparated(" a\tb  c\nd "), 2u);
    EXPECT_EQ(text::countSpaceSeparated("   "), 0u);
    EXPECT_EQ(text::lastScalar("wait\u2026"), U'\u2026');
    EXPECT_EQ(text::lastScalar(""), std::nullopt);
}

TEST(Text, RegexEscapingAndUTF8Validity) {
    EXPECT_FALSE(text::Regex::compile("(unclosed").has_value());
    const auto swap = text::Regex::compile("(\\w+)@(\\w+)");
    EXPECT_EQ(swap->replaceAll("a@b", "$2 at $1"), "b at a");
    const std::string nasty = "a.b*c?(d)[e]{f}^$|\\/+-#<>!~";
    const auto literal = text::Regex::compile(text::Regex::escapePattern(nasty));
    ASSERT_TRUE(literal.has_value());
    EXPECT_EQ(literal->replaceAll("x" + nasty + "x", text::Regex::escapeTemplate("$1\\n")),
              "x$1\\nx");

    for (const std::string& valid : {std::string(""), std::string("plain, żółć, 漢字, \U0001F600"),
                                     std::string("nul\0inside", 11)}) {
        EXPECT_TRUE(text::isValidUTF8(valid)) << valid;
    }
    // A stray byte, an overlong "/", a UTF-16 surrogate, an end mid-sequence.
    for (const char* invalid : {"\xff", "\xc0\xaf", "\xed\xa0\x80", "truncated \xe2\x82"}) {
        EXPECT_FALSE(text::isValidUTF8(invalid)) << invalid;
    }
    EXPECT_EQ(appendPath("https://h/v1", "audio/transcriptions"),
              "https://h/v1/audio/transcriptions");
    EXPECT_EQ(appendPath("https://h/v1/", "/chat/completions"), "https://h/v1/chat/completions");
}

}  // namespace
}  // namespace tevra
