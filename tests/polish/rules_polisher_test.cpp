#include "polish/rules_polisher.h"

#include <gtest/gtest.h>

namespace tevra {
namespace {

struct Case {
    std::string text;
    std::vector<Replacement> rules;
    std::string expected;
};

TEST(Replacements, ApplyInOrderAsWholeWordLiteralsOrIgnoreCaseRegexes) {
    const Case cases[] = {
        {"Cat and CAT and cat", {{"cat", "dog"}}, "dog and dog and dog"},
        {"concat category", {{"cat", "dog"}}, "concat category"},
        {"CAT", {{"cat", "Dog"}}, "Dog"},
        {"Zażółć gęślą jaźń", {{"GĘŚLĄ", "duszą"}}, "Zażółć duszą jaźń"},
        // Literal text is never read as a pattern or a template.
        {"pay 5 now", {{"5", "$5"}}, "pay $5 now"},
        {"see a.b here, not axb", {{"a.b", "A\\1"}}, "see A\\1 here, not axb"},
        {"a+b=c", {{"a+b", "sum"}}, "sum=c"},
        {"e-mail me", {{"e-mail", "email"}}, "email me"},
        {"a#b <c>d ~x~", {{"a#b", "ok"}, {"c>d", "e"}, {"#b", "no"}}, "ok <e ~x~"},
        // A rule starting with a non-word character needs a word character before it.
        {"x (c) y", {{"(c)", "\u00a9"}}, "x (c) y"},
        {"x1(c)y", {{"(c)", "\u00a9"}}, "x1\u00a9y"},
        {"John Smith", {{"(\\w+) (\\w+)", "$2, $1", true}}, "Smith, John"},
        {"COLOUR colour", {{"colou?r", "color", true}}, "color color"},
        {"one fish", {{"([a-z", "x", true}, {"one", "two"}}, "two fish"},  // broken rule skipped
        {"alpha", {{"alpha", "beta"}, {"beta", "gamma"}}, "gamma"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Replacements::apply(c.text, c.rules), c.expected) << c.text;
    }
}

TEST(RulesPolisher, CapitalisesTrimsAndEndsFourWordsWithAFullStop) {
    const Case cases[] = {
        {"the cat sat down", {}, "The cat sat down."},
        {"the cat sat", {}, "The cat sat"},
        {"is it four words?", {}, "Is it four words?"},
        {"wait for it now!", {}, "Wait for it now!"},
        {"and so it goes\u2026", {}, "And so it goes\u2026"},
        // Only the last scalar counts: a closing quote or bracket still gets a stop.
        {"he said \"go now.\"", {}, "He said \"go now.\"."},
        {"one two three (four)", {}, "One two three (four)."},
        // Words are counted on blanks only: a line break does not separate them.
        {"one\ntwo three four", {}, "One\ntwo three four"},
        {"a  b   c    d", {}, "A  b   c    d."},
        {" \n\t ", {}, ""},
        {"  hello  \n", {}, "Hello"},
        {"um", {{"um", ""}}, ""},
        {"ßtraße", {}, "SStraße"},
        {"łódź", {}, "Łódź"},
        {"ǆungla", {}, "Ǆungla"},
        {"123 go", {}, "123 go"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(RulesPolisher::apply(c.text, c.rules), c.expected) << c.text;
    }

    const RulesPolisher rules;
    EXPECT_EQ(rules.name(), "rules");
    EXPECT_EQ(rules.polish("cat sat on mat", {}, {"ignored"}, {{"cat", "dog"}}, {}),
              "Dog sat on mat.");
    try {
        rules.instruct("do it", {}, {});
        ADD_FAILURE() << "instruct should fail";
    } catch (const InstructUnsupported& e) {
        EXPECT_EQ(e.description(), "rules cannot execute instructions (needs an LLM)");
    }
    EXPECT_THROW(rules.compose("s", "u"), InstructUnsupported);
}

}  // namespace
}  // namespace tevra
