#include "polish/rules_polisher.h"

#include <gtest/gtest.h>

namespace tevra {
namespace {

std::string applyRules(std::string_view text, std::vector<Replacement> rules) {
    return Replacements::apply(text, rules);
}

TEST(Replacements, LiteralRulesMatchWholeWordsInAnyCase) {
    const std::vector<Replacement> catToDog = {Replacement{"cat", "dog"}};
    EXPECT_EQ(applyRules("Cat and CAT and cat", catToDog), "dog and dog and dog");
    EXPECT_EQ(applyRules("concat category", catToDog), "concat category");
    // Case of the match is not carried over.
    EXPECT_EQ(applyRules("CAT", {Replacement{"cat", "Dog"}}), "Dog");
}

TEST(Replacements, LiteralTextIsNeverReadAsPatternOrTemplate) {
    EXPECT_EQ(applyRules("pay 5 now", {Replacement{"5", "$5"}}), "pay $5 now");
    EXPECT_EQ(applyRules("see a.b here, not axb", {Replacement{"a.b", "A\\1"}}),
              "see A\\1 here, not axb");
    EXPECT_EQ(applyRules("x (c) y", {Replacement{"(c)", "\u00a9"}}), "x (c) y")
        << "a rule starting with a non-word character needs a word character before it";
    EXPECT_EQ(applyRules("x1(c)y", {Replacement{"(c)", "\u00a9"}}), "x1\u00a9y");
    EXPECT_EQ(applyRules("a+b=c", {Replacement{"a+b", "sum"}}), "sum=c");
    EXPECT_EQ(applyRules("e-mail me", {Replacement{"e-mail", "email"}}), "email me");
    EXPECT_EQ(applyRules("a#b <c>d ~x~", {Replacement{"a#b", "ok"}, Replacement{"c>d", "e"},
                                          Replacement{"#b", "no"}}),
              "ok <e ~x~");
}

TEST(Replacements, RegexRulesUseGroupsAndIgnoreCase) {
    EXPECT_EQ(applyRules("John Smith", {Replacement{"(\\w+) (\\w+)", "$2, $1", true}}),
              "Smith, John");
    EXPECT_EQ(applyRules("COLOUR colour", {Replacement{"colou?r", "color", true}}), "color color");
}

TEST(Replacements, BrokenRuleIsSkippedAndLaterRulesStillRun) {
    const std::vector<Replacement> rules = {Replacement{"([a-z", "x", true},
                                            Replacement{"one", "two"}};
    EXPECT_EQ(applyRules("one fish", rules), "two fish");
}

TEST(Replacements, RulesRunOneAfterAnother) {
    const std::vector<Replacement> rules = {Replacement{"alpha", "beta"},
                                            Replacement{"beta", "gamma"}};
    EXPECT_EQ(applyRules("alpha", rules), "gamma");
}

TEST(Replacements, WorksOnNonAsciiWords) {
    EXPECT_EQ(applyRules("Zażółć gęślą jaźń", {Replacement{"GĘŚLĄ", "duszą"}}),
              "Zażółć duszą jaźń");
}

TEST(RulesPolisher, CapitalisesAndAddsFullStopFromFourWords) {
    EXPECT_EQ(RulesPolisher::apply("the cat sat down", {}), "The cat sat down.");
    EXPECT_EQ(RulesPolisher::apply("the cat sat", {}), "The cat sat");
    EXPECT_EQ(RulesPolisher::apply("is it four words?", {}), "Is it four words?");
    EXPECT_EQ(RulesPolisher::apply("wait for it now!", {}), "Wait for it now!");
    EXPECT_EQ(RulesPolisher::apply("and so it goes\u2026", {}), "And so it goes\u2026");
    // Only the last scalar counts: a closing quote or bracket still gets a stop.
    EXPECT_EQ(RulesPolisher::apply("he said \"go now.\"", {}), "He said \"go now.\".");
    EXPECT_EQ(RulesPolisher::apply("one two three (four)", {}), "One two three (four).");
}

TEST(RulesPolisher, WordsAreCountedOnBlanksOnly) {
    // Two lines of one and two words: a line break does not separate words.
    EXPECT_EQ(RulesPolisher::apply("one\ntwo three four", {}), "One\ntwo three four");
    EXPECT_EQ(RulesPolisher::apply("a  b   c    d", {}), "A  b   c    d.");
}

TEST(RulesPolisher, TrimsAndHandlesEmptyResults) {
    EXPECT_EQ(RulesPolisher::apply(" \n\t ", {}), "");
    EXPECT_EQ(RulesPolisher::apply("  hello  \n", {}), "Hello");
    EXPECT_EQ(RulesPolisher::apply("um", {Replacement{"um", ""}}), "");
}

TEST(RulesPolisher, CapitalisationFollowsUnicodeCaseRules) {
    EXPECT_EQ(RulesPolisher::apply("ßtraße", {}), "SStraße");
    EXPECT_EQ(RulesPolisher::apply("łódź", {}), "Łódź");
    EXPECT_EQ(RulesPolisher::apply("ǆungla", {}), "Ǆungla");
    EXPECT_EQ(RulesPolisher::apply("123 go", {}), "123 go");
}

TEST(RulesPolisher, IsAPolishBackendThatCannotFollowInstructions) {
    const RulesPolisher rules;
    EXPECT_EQ(rules.name(), "rules");
    EXPECT_EQ(rules.polish("cat sat on mat", {}, {"ignored"}, {Replacement{"cat", "dog"}}, {}),
              "Dog sat on mat.");
    try {
        rules.instruct("do it", {}, {});
        FAIL() << "instruct should fail";
    } catch (const InstructUnsupported& e) {
        EXPECT_EQ(e.description(), "rules cannot execute instructions (needs an LLM)");
    }
    EXPECT_THROW(rules.compose("s", "u"), InstructUnsupported);
}

}  // namespace
}  // namespace tevra
