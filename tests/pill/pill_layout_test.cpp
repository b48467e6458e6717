// Where the pills stand: the remembered spots and the arithmetic of docking.
#include "pill/pill_layout.h"

#include <gtest/gtest.h>

#include <fstream>

#include "pill/pill_metrics.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::readFile;

TEST(PillLayout, SpotsAreKeptPerScreenPrivatelyAndADamagedFileIsSetAside) {
    testing::TempDir data;
    const auto file = data / "Tevra" / "pill_layout.json";
    EXPECT_FALSE(PillLayout(data / "Tevra").spot(7).has_value()) << "no file";

    PillLayout layout(data / "Tevra");
    layout.set(7, 0.25, 0.5, PillDock::left);
    layout.set(4000000000u, 1, 0.1, PillDock::top);
    EXPECT_EQ(testing::modeOf(file), 0600u);
    EXPECT_EQ(testing::modeOf(data / "Tevra"), 0700u);
    const PillLayout again(data / "Tevra");
    EXPECT_EQ(again.spot(7), (PillSpot{0.25, 0.5, PillDock::left}));
    EXPECT_EQ(again.spot(4000000000u), (PillSpot{1, 0.1, PillDock::top}));

    std::ofstream(file) << R"({"7": {"fx": 0.3, "fy": 0.9, "edge": "diagonal"}})";
    EXPECT_EQ(PillLayout(data / "Tevra").spot(7), (PillSpot{0.3, 0.9, PillDock::bottom}));

    for (const char* damaged : {"not json", "[1, 2]", R"({"7": {"fx": "left"}})",
                                R"({"7": {"fx": 1, "fy": 1, "edge": "top", "extra": 1}})"}) {
        std::ofstream(file) << damaged;
        PillLayout reread(data / "Tevra");
        EXPECT_FALSE(reread.spot(7).has_value()) << damaged;
        EXPECT_FALSE(std::filesystem::exists(file)) << damaged;
        reread.set(8, 0.5, 0.5, PillDock::right);
        EXPECT_EQ(readFile(file), R"({"8":{"edge":"right","fx":0.5,"fy":0.5}})");
    }
    int aside = 0;
    for (const auto& entry : std::filesystem::directory_iterator(data / "Tevra")) {
        aside += entry.path().filename().string().starts_with("pill_layout.json.damaged-");
    }
    EXPECT_EQ(aside, 4) << "nothing is deleted";

    EXPECT_EQ(PillLayout::screenKey("HDMI-1"), PillLayout::screenKey("HDMI-1"));
    EXPECT_NE(PillLayout::screenKey("HDMI-1"), PillLayout::screenKey("HDMI-2"));
    EXPECT_EQ(PillLayout::screenKey(""), 2166136261u) << "FNV-1a, the same in every build";
}

// A 1000 x 600 visible frame whose top left is at (100, 40) on the screen.
constexpr PillRect kFrame{100, 40, 1000, 600};
constexpr PillSize kVisible{1000, 600};

TEST(PillPlacement, FramesStandAgainstTheirEdgeAndStayOnTheScreen) {
    struct Case {
        const char* name;
        PillPlace place;
        PillSize size;
        PillRect frame;
    };
    const Case cases[] = {
        {"no spot: middle of the bottom",
         PillPlacement::initial(std::nullopt, kVisible),
         {48, 30},
         {576, 598, 48, 30}},
        {"a spot scales with the screen",
         PillPlacement::initial(PillSpot{0.25, 0.5, PillDock::right}, kVisible),
         {26, 54},
         {1062, 313, 26, 54}},
        {"top", {PillDock::top, {500, 573}}, {320, 412}, {440, 52, 320, 412}},
        {"left, grows away from its edge",
         {PillDock::left, {25, 300}},
         {92, 56},
         {112, 312, 92, 56}},
        {"clamped into the corner", {PillDock::bottom, {3, 27}}, {244, 250}, {100, 378, 244, 250}},
        {"larger than the frame: the far side wins",
         {PillDock::bottom, {500, 27}},
         {1200, 700},
         {-100, 40, 1200, 700}},
        {"rounded", {PillDock::bottom, {500.4, 27}}, {49, 30}, {576, 598, 49, 30}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(PillPlacement::frameFor(c.size, c.place, kFrame), c.frame) << c.name;
    }
}

TEST(PillPlacement, ADropSnapsToTheNearestEdgeAtTheRestingSize) {
    struct Case {
        PillPoint center;
        PillSize visible;
        PillPlace rest;
    };
    const Case cases[] = {
        {{300, 300}, {600, 600}, {PillDock::left, {25, 300}}},  // the centre of a square
        {{995, 598}, kVisible, {PillDock::top, {976, 573}}},    // 2 from the top, 5 from the right
        {{990, 300}, kVisible, {PillDock::right, {975, 300}}},
        {{500, 40}, kVisible, {PillDock::bottom, {500, 27}}},
        {{5, 2}, kVisible, {PillDock::bottom, {24, 27}}},  // on the corner: kept on the frame
        {{20, 590}, kVisible, {PillDock::top, {24, 573}}},
        {{3, 590}, kVisible, {PillDock::left, {25, 573}}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(PillPlacement::snap(c.center, c.visible), c.rest)
            << c.center.x << ", " << c.center.y;
    }
    EXPECT_EQ(PillPlacement::spotOf({PillDock::left, {25, 300}}, kVisible),
              (PillSpot{0.025, 0.5, PillDock::left}));
    // A drag keeps the whole panel on the frame and measures its centre Y up.
    const PillPoint origin = PillPlacement::dragOrigin({2000, 0}, {-10, -5}, {48, 30}, kFrame);
    EXPECT_EQ(origin, (PillPoint{1052, 40}));
    EXPECT_EQ(PillPlacement::centerOf(origin, {48, 30}, kFrame), (PillPoint{976, 585}));
}

}  // namespace
}  // namespace tevra
