#include "core/text.h"

#include <gtest/gtest.h>

#include "core/http_client.h"

namespace tevra {
namespace {

TEST(Text, TrimRemovesUnicodeWhiteSpaceOnly) {
    EXPECT_EQ(text::trim(" \t\r\n\u00a0\u2028hello world\u3000\n"), "hello world");
    EXPECT_EQ(text::trim("\u200bzero width stays\u200b"), "\u200bzero width stays\u200b");
    EXPECT_EQ(text::trim(" \n "), "");
    EXPECT_EQ(text::trimBlanks(" \t a\n \t"), "a\n");
}

TEST(Text, CharactersAreGraphemeClusters) {
    const std::string family = "\U0001F468\u200D\U0001F469\u200D\U0001F467";  // one emoji
    const std::string accented = "e\u0301";                                   // e + combining
    const std::string s = family + accented + "xy";
    EXPECT_EQ(text::characterCount(s), 4u);
    EXPECT_EQ(text::prefixCharacters(s, 2), family + accented);
    EXPECT_EQ(text::suffixCharacters(s, 3), accented + "xy");
    EXPECT_EQ(text::prefixCharacters("abc", 10), "abc");
    EXPECT_EQ(text::suffixCharacters("", 3), "");
    EXPECT_EQ(text::characterCount(""), 0u);
}

TEST(Text, CaseMappingUsesFullUnicodeRules) {
    EXPECT_EQ(text::capitalizeFirst("é\u0301tude"), "É\u0301tude");
    EXPECT_EQ(text::capitalizeFirst("ﬁne"), "FIne");
    EXPECT_EQ(text::lowercase("ŁÓDŹ İ"), "łódź i\u0307");
    EXPECT_EQ(text::uppercase("straße"), "STRASSE");
    EXPECT_EQ(text::capitalizeFirst(""), "");
}

TEST(Text, SpaceSeparatedPiecesAndLastScalar) {
    EXPECT_EQ(text::countSpaceSeparated(""), 0u);
    EXPECT_EQ(text::countSpaceSeparated("   "), 0u);
    EXPECT_EQ(text::countSpaceSeparated(" a\tb  c\nd "), 2u);
    EXPECT_EQ(text::lastScalar("wait\u2026"), U'\u2026');
    EXPECT_EQ(text::lastScalar("ok"), U'k');
    EXPECT_EQ(text::lastScalar(""), std::nullopt);
}

TEST(Text, RegexCompilesCaseInsensitiveWithTemplates) {
    EXPECT_FALSE(text::Regex::compile("(unclosed").has_value());
    const auto re = text::Regex::compile("\\bGRÜN\\b", true);
    ASSERT_TRUE(re.has_value());
    EXPECT_EQ(re->replaceAll("grün, Grün und grünlich", "green"), "green, green und grünlich");
    const auto swap = text::Regex::compile("(\\w+)@(\\w+)");
    EXPECT_EQ(swap->replaceAll("a@b", "$2 at $1"), "b at a");
    EXPECT_TRUE(text::containsMatch("漢字 text", "\\p{Han}"));
    EXPECT_FALSE(text::containsMatch("plain", "\\p{Han}"));

    const std::string nasty = "a.b*c?(d)[e]{f}^$|\\/+-#<>!~";
    const auto literal = text::Regex::compile(text::Regex::escapePattern(nasty));
    ASSERT_TRUE(literal.has_value());
    EXPECT_EQ(literal->replaceAll("x" + nasty + "x", text::Regex::escapeTemplate("$1\\n")),
              "x$1\\nx");
}

TEST(Text, ValidUTF8RejectsMalformedSequences) {
    EXPECT_TRUE(text::isValidUTF8(""));
    EXPECT_TRUE(text::isValidUTF8("plain, żółć, 漢字, \U0001F600"));
    EXPECT_TRUE(text::isValidUTF8(std::string("nul\0inside", 11)));
    EXPECT_FALSE(text::isValidUTF8("\xff"));
    EXPECT_FALSE(text::isValidUTF8("\xc0\xaf"));            // overlong "/"
    EXPECT_FALSE(text::isValidUTF8("\xed\xa0\x80"));        // a UTF-16 surrogate
    EXPECT_FALSE(text::isValidUTF8("truncated \xe2\x82"));  // end mid-sequence
}

TEST(Text, AppendPathJoinsWithOneSlash) {
    EXPECT_EQ(appendPath("https://h/v1", "audio/transcriptions"),
              "https://h/v1/audio/transcriptions");
    EXPECT_EQ(appendPath("https://h/v1/", "/chat/completions"), "https://h/v1/chat/completions");
}

}  // namespace
}  // namespace tevra
