#include "screen_text/block_segmenter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tevra {
namespace {

using ::testing::ElementsAre;

// Lines of height 0.02 (the median) unless said otherwise: gapLow = -0.006,
// gapHigh = 0.016.
OCRLine line(std::string text, double x, double maxY, double width = 0.3, double height = 0.02) {
    return {std::move(text), Rect{x, maxY - height, width, height}};
}

std::vector<std::string> texts(const std::vector<TextBlock>& blocks) {
    std::vector<std::string> out;
    for (const auto& block : blocks) {
        out.push_back(block.text);
    }
    return out;
}

struct Case {
    const char* name;
    std::vector<OCRLine> lines;
    std::vector<std::string> blocks;
};

TEST(BlockSegmenter, GroupsLinesByTheirGeometry) {
    const Case cases[] = {
        {"nothing", {}, {}},
        {"only blanks and tabs", {line(" \t", 0, 0.9), line("", 0, 0.8)}, {}},
        {"a line break alone is text", {line("\n", 0, 0.9)}, {"\n"}},
        {"one line keeps its trailing blank", {line("alone ", 0, 0.9)}, {"alone "}},
        {"top first; equal tops keep input order",
         {line("low", 0, 0.5), line("b", 0.5, 0.9), line("a", 0, 0.9)},
         {"b", "a", "low"}},
        {"a close line below joins", {line("one", 0, 0.9), line("two", 0, 0.875)}, {"one two"}},
        // Median 0.125: gapHigh is 0.1 and gapLow -0.0375, both met exactly.
        {"gap exactly gapHigh opens a block",
         {{"one", {0, 0.2, 0.3, 0.125}}, {"two", {0, 0, 0.3, 0.1}}},
         {"one", "two"}},
        {"gap just under gapHigh joins",
         {{"one", {0, 0.19, 0.3, 0.125}}, {"two", {0, 0, 0.3, 0.1}}},
         {"one two"}},
        {"gap exactly gapLow joins",
         {{"one", {0, 0.0375, 0.3, 0.125}}, {"two", {0, 0, 0.3, 0.075}}},
         {"one two"}},
        {"overlap ratio exactly 0.3 opens a block",
         {{"one", {-1, 0.3, 1, 0.02}}, {"two", {-0.15, 0.275, 0.5, 0.02}}},
         {"one", "two"}},
        {"overlap ratio just over 0.3 joins",
         {{"one", {-1, 0.3, 1, 0.02}}, {"two", {-0.16, 0.275, 0.5, 0.02}}},
         {"one two"}},
        {"a zero-width line opens a block, and so does the next",
         {line("one", 0, 0.9), line("thin", 0.1, 0.875, 0), line("three", 0, 0.85)},
         {"one", "thin", "three"}},
        {"a block stops at a span of 0.6",
         {line("a", 0, 0.9, 0.3, 0.2), line("b", 0, 0.7, 0.3, 0.2), line("c", 0, 0.5, 0.3, 0.2),
          line("d", 0, 0.3, 0.3, 0.2)},
         {"a b c", "d"}},
        {"two columns in one list break each other up",
         {line("L1", 0, 0.9), line("R1", 0.5, 0.89), line("L2", 0, 0.875), line("R2", 0.5, 0.865)},
         {"L1", "R1", "L2", "R2"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(texts(BlockSegmenter::blocks(c.lines)), c.blocks) << c.name;
    }
}

TEST(BlockSegmenter, ABlockSpansTheUnionOfItsLines) {
    const auto blocks =
        BlockSegmenter::blocks({line("wide", 0.1, 0.9, 0.5), line("narrow", 0.2, 0.875, 0.1)});
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_DOUBLE_EQ(blocks[0].rect.minX(), 0.1);
    EXPECT_DOUBLE_EQ(blocks[0].rect.maxX(), 0.6);
    EXPECT_DOUBLE_EQ(blocks[0].rect.minY(), 0.855);
    EXPECT_DOUBLE_EQ(blocks[0].rect.maxY(), 0.9);
}

}  // namespace
}  // namespace tevra
