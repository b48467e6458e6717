#include "screen_text/selection_state.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tevra {
namespace {

using ::testing::ElementsAre;

// A 1000 x 500 view. The left window holds two lines, the right one a line
// level with the first; the panel covers x 740 to 1000.
const std::vector<Rect> kWindows = {{0, 0, 0.5, 1}, {0.5, 0, 0.2, 1}};

std::vector<OCRWord> page() {
    return {{"alpha", {0.05, 0.8, 0.1, 0.04}},
            {"beta", {0.2, 0.8, 0.1, 0.04}},
            {"gamma", {0.05, 0.6, 0.1, 0.04}},
            {"delta", {0.2, 0.6, 0.1, 0.04}},
            {"epsilon", {0.55, 0.8, 0.1, 0.04}}};
}

// The centre of a word in view coordinates.
ViewPoint at(const SelectionState& state, const std::string& text) {
    for (std::size_t i = 0; i < state.words().size(); ++i) {
        if (state.words()[i].text == text) {
            const Rect box = state.viewBox(i);
            return {box.midX(), box.midY()};
        }
    }
    ADD_FAILURE() << "no word " << text;
    return {};
}

struct Gesture {
    const char* from;
    const char* to;  // nullptr: a click
};

std::string pick(SelectionState& state, std::initializer_list<Gesture> gestures) {
    for (const Gesture& g : gestures) {
        state.mouseDown(at(state, g.from));
        if (g.to) {
            state.mouseDragged(at(state, g.to));
        }
        state.mouseUp(at(state, g.to ? g.to : g.from));
    }
    return state.copiedText();
}

TEST(SelectionState, ClicksTakeLinesAndDragsTakeTheRangeInReadingOrder) {
    struct Case {
        const char* name;
        std::initializer_list<Gesture> gestures;
        const char* copied;
    };
    const Case cases[] = {
        {"a click takes the whole line", {{"beta", nullptr}}, "alpha beta"},
        {"a drag takes everything between, in reading order", {{"beta", "gamma"}}, "beta\ngamma"},
        {"backwards the same", {{"gamma", "beta"}}, "beta\ngamma"},
        {"picks are joined by a blank line",
         {{"gamma", nullptr}, {"alpha", nullptr}},
         "gamma delta\n\nalpha beta"},
        {"the same pick twice is kept once; click and drag of one line are equal",
         {{"alpha", nullptr}, {"alpha", "beta"}},
         "alpha beta"},
        {"a drag cannot leave its window: over another it snaps to the nearest line",
         {{"gamma", "epsilon"}},
         "beta\ngamma"},
    };
    for (const Case& c : cases) {
        SelectionState state(1000, 500, page(), kWindows);
        EXPECT_EQ(pick(state, c.gestures), c.copied) << c.name;
    }
}

TEST(SelectionState, PanelRowsAndHover) {
    SelectionState state(1000, 500, page(), kWindows);
    EXPECT_EQ(state.copiedText(), "") << "Return with nothing picked copies nothing";

    pick(state, {{"alpha", nullptr},
                 {"alpha", "gamma"},
                 {"beta", "delta"},
                 {"epsilon", nullptr},
                 {"alpha", nullptr}});
    EXPECT_EQ(state.captured().size(), 4u) << "equal picks are kept once";
    const auto rows = state.panelRows();
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[0].row, (Rect{750, 396, 240, 38}));
    EXPECT_EQ(rows[0].closeBox, (Rect{964, 406, 18, 18}));
    EXPECT_EQ(state.panelHeader(), "Copied  (4)");

    // A drag released over the panel is dropped, and the row under it removed.
    state.mouseDown(at(state, "alpha"));
    state.mouseDragged(at(state, "beta"));
    EXPECT_TRUE(state.mouseUp({rows[1].row.midX(), rows[1].row.midY()}));
    EXPECT_EQ(state.captured().size(), 3u);
    // A pick under way is not copied.
    const std::string before = state.copiedText();
    state.mouseDown(at(state, "alpha"));
    state.mouseDragged(at(state, "delta"));
    EXPECT_EQ(state.copiedText(), before);

    SelectionState hover(1000, 500, page(), kWindows);
    EXPECT_TRUE(hover.mouseMoved(at(hover, "delta")));
    EXPECT_EQ(hover.hoverLine(), 1);
    EXPECT_FALSE(hover.mouseMoved(at(hover, "gamma"))) << "same line: nothing to redraw";
    EXPECT_TRUE(hover.mouseMoved({900, 250}));
    EXPECT_EQ(hover.hoverLine(), std::nullopt);
    EXPECT_FALSE(hover.mouseMoved({900, 200}));
}

TEST(SelectionState, PanelRowsStopWhereTheyNoLongerFit) {
    std::vector<OCRWord> words;
    for (int k = 0; k < 12; ++k) {
        words.push_back({"w" + std::to_string(k), {0.05, 0.9 - k * 0.07, 0.1, 0.03}});
    }
    SelectionState state(1000, 500, words, {});
    for (int k = 0; k < 12; ++k) {
        state.mouseDown(at(state, "w" + std::to_string(k)));
        state.mouseUp(at(state, "w" + std::to_string(k)));
    }
    EXPECT_EQ(state.panelRows().size(), 8u);
    EXPECT_EQ(state.captured().size(), 12u);
    const std::string copied = state.copiedText();
    EXPECT_EQ(std::count(copied.begin(), copied.end(), 'w'), 12);
}

TEST(SelectionState, HitTestingAndPreviews) {
    // Two lines with the same mean height: the earlier wins the tie.
    const std::vector<OCRWord> tie = {{"left", {0.1, 0.5, 0.1, 0.1}},
                                      {"right", {0.5, 0.5, 0.1, 0.1}}};
    SelectionState state(1000, 500, tie, {{0, 0, 0.3, 1}, {0.3, 0, 0.7, 1}});
    EXPECT_EQ(state.wordIndex({350, 275}, std::nullopt, std::nullopt), 0);
    EXPECT_EQ(state.wordIndex({350, 275}, 1, std::nullopt), 1);
    EXPECT_EQ(state.wordIndex({350, 275}, 5, std::nullopt), std::nullopt);
    EXPECT_EQ(state.wordIndex({350, 275}, std::nullopt, std::pair{0.45, 0.5}), 1)
        << "within columnPad of the column";

    SelectionState none(1000, 500, {}, {});
    none.mouseDown({10, 10});
    none.mouseDragged({20, 20});
    none.mouseUp({20, 20});
    EXPECT_TRUE(none.captured().empty()) << "a press on no word sets no anchor";
    EXPECT_EQ(none.medWordH(), 0.02);

    const std::vector<OCRWord> longLine = {{"Zażółć", {0.0, 0.5, 0.1, 0.05}},
                                           {"gęślą", {0.11, 0.5, 0.1, 0.05}},
                                           {"jaźń", {0.22, 0.5, 0.1, 0.05}},
                                           {"twenty-five-letters-long", {0.33, 0.5, 0.1, 0.05}},
                                           {"next", {0.0, 0.4, 0.1, 0.05}}};
    SelectionState previews(1000, 500, longLine, {});
    previews.mouseDown({10, 260});
    previews.mouseDragged({10, 210});
    previews.mouseUp({10, 210});
    EXPECT_EQ(previews.preview(0), "Zażółć gęślą jaźń twenty-five-letters-long n…");
    EXPECT_EQ(previews.debugLinesDump(),
              "L0   c0   y=0.525 x=0.000  Zażółć gęślą jaźń twenty-five-letters-long\n"
              "L1   c0   y=0.425 x=0.000  next\n");
    EXPECT_EQ(previews.debugDragText(2, 4), "jaźń twenty-five-letters-long\nnext");
    EXPECT_THAT(previews.selectionRects({0, 1, 4, 99}),
                ElementsAre(Rect{-2, 247, 214, 31}, Rect{-2, 197, 104, 31}));
}

}  // namespace
}  // namespace tevra
