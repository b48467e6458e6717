#include "pill/meter_geometry.h"

#include <gtest/gtest.h>

#include <cmath>

#include "pill/hud_geometry.h"

namespace tevra {
namespace {

TEST(MeterGeometry, BarsSpanTheWidthAndStandCentred) {
    const PillSize size{92, 20};
    for (int count : {9, 13}) {
        const PillRect last = MeterGeometry::barRect(count - 1, count, 0.5, size);
        EXPECT_EQ(MeterGeometry::barRect(0, count, 0.5, size).x, 0);
        EXPECT_DOUBLE_EQ(last.x + last.width, size.width) << count;
    }
    EXPECT_EQ(MeterGeometry::barRect(3, 13, -1, size).height, 2.5);
    EXPECT_EQ(MeterGeometry::barRect(3, 13, 4, size).height, 20);
    const PillRect half = MeterGeometry::barRect(3, 13, 0.5, size);
    EXPECT_DOUBLE_EQ(half.height, 17.5 * 0.5 + 2.5);
    EXPECT_DOUBLE_EQ(half.y + half.height / 2, 10);
}

TEST(MeterGeometry, BarsFadeAsTheCheckMarkGrowsIn) {
    EXPECT_DOUBLE_EQ(MeterGeometry::doneFade(0.5), 0.3);
    EXPECT_EQ(MeterGeometry::doneFade(0.9), 0);
    EXPECT_DOUBLE_EQ(MeterGeometry::checkScale(0), 0.7);
    EXPECT_DOUBLE_EQ(MeterGeometry::checkScale(0.5), 0.7 + 0.3 * 0.875);
    EXPECT_EQ(MeterGeometry::checkScale(1), 1);

    // Y down: the mark dips below the centre and its right tip is highest.
    const auto mark = MeterGeometry::checkMark(1, {92, 20});
    EXPECT_EQ(mark.radius, 10);
    const auto [left, bottom, tip] = mark.points;
    EXPECT_DOUBLE_EQ(left.x, 41.8);
    EXPECT_DOUBLE_EQ(left.y, 9.8);
    EXPECT_DOUBLE_EQ(bottom.x, 45);
    EXPECT_DOUBLE_EQ(bottom.y, 13);
    EXPECT_DOUBLE_EQ(tip.x, 50.6);
    EXPECT_DOUBLE_EQ(tip.y, 6.6);
}

TEST(HudGeometry, PanelSitsAtTheBottomCentreOfTheAvailableArea) {
    // A 1920 x 1080 screen with a 40 px dock at its bottom.
    EXPECT_EQ(HudGeometry::panelOrigin({0, 0, 1920, 1040}), (PillPoint{896, 974}));
    // A second screen to the right, with a bar at its top.
    EXPECT_EQ(HudGeometry::panelOrigin({1920, 32, 1280, 992}), (PillPoint{2496, 958}));
    // Half pixels round away from zero.
    EXPECT_EQ(HudGeometry::panelOrigin({0, 0, 1365, 768}), (PillPoint{619, 702}));
    EXPECT_EQ(HudGeometry::panelOrigin({-1365, 0, 1365, 768}), (PillPoint{-747, 702}));
    EXPECT_EQ(HudGeometry::meterFrame(), (PillRect{18, 9, 92, 20}));
}

TEST(HudGeometry, BarAlphaDimsTheLowWaveAndFadesForTheCheckMark) {
    using Mode = HudMeter::Mode;
    EXPECT_EQ(HudGeometry::barAlpha(Mode::recording, 0.3, 0.5), 0.92);
    EXPECT_EQ(HudGeometry::barAlpha(Mode::processing, 0, 0), 0.5);
    EXPECT_DOUBLE_EQ(HudGeometry::barAlpha(Mode::processing, 0.2, 0), 0.75);
    EXPECT_EQ(HudGeometry::barAlpha(Mode::processing, 0.9, 0), 1);
    EXPECT_DOUBLE_EQ(HudGeometry::barAlpha(Mode::done, 0.5, 0.5), 0.92 * 0.3);
}

TEST(HudGeometry, ShakeSwingsBothWaysNarrowerEachTimeAndEndsWhereItStarted) {
    const auto& steps = HudGeometry::shakeSteps();
    EXPECT_EQ(steps.front().offset, -7);
    EXPECT_EQ(steps.back().offset, 0);
    EXPECT_DOUBLE_EQ(steps.back().delay, 0.27);
    for (size_t i = 1; i + 1 < steps.size(); ++i) {
        EXPECT_LT(steps[i].offset * steps[i - 1].offset, 0) << i;
        EXPECT_LE(std::abs(steps[i].offset), std::abs(steps[i - 1].offset)) << i;
    }
}

}  // namespace
}  // namespace tevra
