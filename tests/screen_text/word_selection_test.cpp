#include "screen_text/word_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tevra {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

OCRWord word(std::string text, double x, double y, double w = 0.125, double h = 0.125) {
    return {std::move(text), Rect{x, y, w, h}};
}

// "text/line/column" for each word in reading order.
std::vector<std::string> layoutOf(const WordLayout& layout) {
    std::vector<std::string> out;
    for (std::size_t i = 0; i < layout.ordered.size(); ++i) {
        out.push_back(layout.ordered[i].text + "/" + std::to_string(layout.lineOf[i]) + "/" +
                      std::to_string(layout.column[i]));
    }
    return out;
}

struct Case {
    const char* name;
    std::vector<OCRWord> words;
    std::vector<Rect> windows;
    std::vector<std::string> expected;
};

// The thresholds below are met exactly: with word heights and widths of
// 0.125, a column needs a gap of 0.125, a band a gap of 0.1625, and a word
// more than 0.075 off the line's running mean starts a new line.
TEST(WordSelection, ReadingOrderLinesAndColumns) {
    const Rect left{0, 0, 0.5, 1};
    const Case cases[] = {
        {"no words", {}, {}, {}},
        {"one word", {word("only", 0.4, 0.4)}, {}, {"only/0/0"}},
        {"a row with a small gap is one line, left to right",
         {word("b", 0.2, 0.5), word("a", 0, 0.5)},
         {},
         {"a/0/0", "b/0/0"}},
        {"a gap of exactly the column width cuts",
         {word("b", 0.25, 0.5), word("a", 0, 0.5)},
         {},
         {"a/0/1", "b/1/2"}},
        {"a column is read to its end before the next",
         {word("R1", 0.5, 0.8), word("L1", 0, 0.8), word("L2", 0, 0.6), word("R2", 0.5, 0.6)},
         {},
         {"L1/0/1", "L2/1/1", "R1/2/2", "R2/3/2"}},
        {"a band gap of exactly 1.3 median heights cuts, and its upper band splits in columns",
         {word("W", 0, 0.02, 0.6), word("L", 0, 0.3075, 0.1), word("R", 0.5, 0.3075, 0.1)},
         {},
         {"L/0/1", "R/1/2", "W/2/0"}},
        {"just under it nothing cuts",
         {word("W", 0, 0.02, 0.6), word("L", 0, 0.3, 0.1), word("R", 0.5, 0.3, 0.1)},
         {},
         {"L/0/0", "R/0/0", "W/1/0"}},
        {"centres 0.6 median heights apart start a new line",
         {word("up", 0, 0.0875), word("down", 0.2, 0.0125)},
         {},
         {"up/0/0", "down/1/0"}},
        {"words outside every window come last; a half-covered word belongs",
         {word("free", 0.4, 0.9, 0.2, 0.05), word("l", 0.4, 0.5), word("r", 0.6, 0.5),
          word("half", 0.4375, 0.2)},
         {Rect{0, 0, 0.5, 0.8}, Rect{0.5, 0, 0.5, 0.8}},
         {"l/0/0", "half/1/0", "r/2/1", "free/3/2"}},
        {"a word of no area belongs to no window",
         {word("flat", 0.1, 0.5, 0.1, 0), word("in", 0.1, 0.7)},
         {left},
         {"in/0/0", "flat/1/1"}},
        {"the front window wins where two overlap",
         {word("front", 0.1, 0.5), word("back", 0.1, 0.2)},
         {Rect{0, 0.4, 0.5, 0.5}, Rect{0, 0, 1, 1}},
         {"front/0/0", "back/1/1"}},
    };
    for (const Case& c : cases) {
        const WordLayout layout = c.windows.empty()
                                      ? WordSelection::readingOrderColumns(c.words)
                                      : WordSelection::readingOrderColumns(c.words, c.windows);
        EXPECT_EQ(layoutOf(layout), c.expected) << c.name;
        const auto plain = c.windows.empty() ? WordSelection::readingOrder(c.words)
                                             : WordSelection::readingOrder(c.words, c.windows);
        EXPECT_EQ(plain.lineOf, layout.lineOf) << c.name;
    }
}

TEST(WordSelection, RecursionStopsAtDepthTwentyFive) {
    // Thirty narrow words in a row, the gaps shrinking to the right: every
    // level cuts the leftmost word off as a column of its own, until the
    // recursion stops and the last five make one line.
    std::vector<OCRWord> words;
    double x = 0;
    double gap = 0.1;
    for (int i = 0; i < 30; ++i) {
        words.push_back(word(std::to_string(i), x, 0.5, 1e-4, 0.01));
        x += 1e-4 + gap;
        gap *= 0.8;
    }
    const WordLayout layout = WordSelection::readingOrderColumns(words);
    ASSERT_EQ(layout.ordered.size(), 30u);
    EXPECT_EQ(layout.lineOf[24], 24);
    EXPECT_THAT(std::vector(layout.lineOf.begin() + 25, layout.lineOf.end()),
                ElementsAre(25, 25, 25, 25, 25));
}

TEST(WordSelection, MedianIsTheUpperOne) {
    EXPECT_EQ(WordSelection::median({}), 0);
    EXPECT_EQ(WordSelection::median({3, 1, 2, 4}), 3);
    EXPECT_EQ(WordSelection::median({5}), 5);
}

TEST(WordSelection, TextAndDragSelection) {
    const std::vector<OCRWord> words = {word("one", 0, 0.8), word("two", 0.2, 0.8),
                                        word("three", 0, 0.6), word("four", 0, 0.4)};
    const std::vector<std::int64_t> lineOf = {0, 0, 1, 2};
    EXPECT_EQ(WordSelection::text({3, 0, 1, -1, 9, 2}, words, lineOf), "one two\nthree\nfour");
    EXPECT_EQ(WordSelection::text({1, 1}, words, lineOf), "two two");
    EXPECT_EQ(WordSelection::text({}, words, lineOf), "");
    // A shorter lineOf bounds the indices too.
    EXPECT_EQ(WordSelection::text({0, 2}, words, {0, 0}), "one");

    EXPECT_THAT(WordSelection::dragSelection(0, 2, words, 0.05), ElementsAre(0, 1, 2));
    EXPECT_EQ(WordSelection::dragSelection(2, 0, words, 0.05),
              WordSelection::dragSelection(0, 2, words, 0.05));
    // The band between the two words' centres, and no further.
    EXPECT_THAT(WordSelection::dragSelection(1, 1, words, 0.05), ElementsAre(1));
    EXPECT_THAT(WordSelection::dragSelection(0, 4, words, 0.05), ElementsAre());
    EXPECT_THAT(WordSelection::range(3, 1), ElementsAreArray({1, 2, 3}));
}

}  // namespace
}  // namespace tevra
