#include "pill/hud_meter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "pill/meter_engine.h"

namespace tevra {
namespace {

TEST(HudMeter, StepsWheneverAskedAndDiesAwayInIdle) {
    HudMeter meter;
    meter.setMode(HudMeter::Mode::recording);
    meter.setLevel(1);
    for (int i = 0; i < 40; ++i) {
        meter.step();
    }
    EXPECT_DOUBLE_EQ(meter.phase, 40 * 0.13);  // no rate limit
    const auto raised = meter.bars;
    meter.setMode(HudMeter::Mode::idle);
    for (int i = 0; i < 5; ++i) {
        meter.step();
    }
    for (int i = 0; i < HudMeter::barCount; ++i) {
        EXPECT_GT(raised[i], 0) << i;
        EXPECT_NEAR(meter.bars[i], raised[i] * std::pow(0.8, 5), 1e-12) << i;
    }
}

TEST(HudMeter, LevelIsClampedWhenSetAndEveryDoneOrErrorStartsAfresh) {
    HudMeter meter;
    meter.setLevel(5.0);
    EXPECT_EQ(meter.level, 5.0);
    EXPECT_EQ(meter.levelTarget, 1.0);
    meter.setLevel(-1);
    EXPECT_EQ(meter.levelTarget, 0.0);

    meter.setMode(HudMeter::Mode::done);
    for (int i = 0; i < 20; ++i) {
        meter.step();
    }
    meter.setMode(HudMeter::Mode::done);
    EXPECT_EQ(meter.doneProgress, 0);
    meter.setMode(HudMeter::Mode::error);
    meter.step();
    meter.setMode(HudMeter::Mode::error);
    EXPECT_EQ(meter.errorGlow, 1.0);
}

TEST(HudMeter, MovesLikeThePillMeterAcrossThirteenBars) {
    // The error wave has no envelope, so the first nine bars of both match.
    HudMeter hud;
    MeterEngine pill;
    hud.setMode(HudMeter::Mode::error);
    for (int frame = 0; frame < 30; ++frame) {
        hud.step();
        pill.step(frame, PillMeterMode::error, 0);
    }
    for (int i = 0; i < MeterEngine::barCount; ++i) {
        EXPECT_EQ(hud.bars[i], pill.bars[i]) << i;
    }
    EXPECT_EQ(hud.errorGlow, pill.errorGlow);
    EXPECT_DOUBLE_EQ(MeterAnimation::envelope(12, HudMeter::barCount), 0.5);
    EXPECT_EQ(MeterAnimation::envelope(6, HudMeter::barCount), 1.0);
}

}  // namespace
}  // namespace tevra
