#include "pill/meter_engine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tevra {
namespace {

// Steps count frames 1/60 s apart from start; returns the time after the last.
double run(MeterEngine& engine, int count, PillMeterMode mode, double level, double start) {
    for (int i = 0; i < count; ++i, start += 1.0 / 60) {
        engine.step(start, mode, level);
    }
    return start;
}

TEST(MeterEngine, RateLimitLetsOnlyTheLevelAndTheModeThrough) {
    MeterEngine engine;
    engine.step(-50, PillMeterMode::recording, 0.5);  // the first step always runs
    EXPECT_EQ(engine.lastStep, -50);
    EXPECT_DOUBLE_EQ(engine.phase, 0.13);

    const MeterEngine before = engine;
    engine.step(-49.99, PillMeterMode::recording, 0.9);
    EXPECT_EQ(engine.levelTarget, 0.9);
    EXPECT_EQ(engine.bars, before.bars);
    EXPECT_EQ(engine.levelEased, before.levelEased);
    EXPECT_EQ(engine.phase, before.phase);
    EXPECT_EQ(engine.lastStep, before.lastStep);

    // A done or an error between frames still restarts its animation.
    run(engine, 20, PillMeterMode::done, 0, 1);
    ASSERT_EQ(engine.doneProgress, 1);
    engine.step(*engine.lastStep + 0.005, PillMeterMode::recording, 0);
    engine.step(*engine.lastStep + 0.01, PillMeterMode::done, 0);
    EXPECT_EQ(engine.doneProgress, 0);
    engine.step(*engine.lastStep + 0.012, PillMeterMode::error, 0);
    EXPECT_EQ(engine.errorGlow, 1.0);
    EXPECT_EQ(engine.lastMode, PillMeterMode::error);
}

TEST(MeterEngine, LevelIsClampedAndNonsenseIsSilence) {
    MeterEngine engine;
    engine.step(0, PillMeterMode::recording, 5.0);
    EXPECT_EQ(engine.levelTarget, 1.0);
    engine.step(1, PillMeterMode::recording, -1);
    EXPECT_EQ(engine.levelTarget, 0.0);
    run(engine, 10, PillMeterMode::recording, std::nan(""), 2);
    EXPECT_EQ(engine.levelTarget, 0.0);
    EXPECT_FALSE(std::isnan(engine.levelEased) || std::isnan(engine.bars[4]));
}

TEST(MeterEngine, RecordingBarsFollowTheVoiceAndPeakInTheCentre) {
    // At full level and the top of the wave a bar reaches its envelope; the
    // centre bar exactly 1.
    for (int i = 0; i < MeterEngine::barCount; ++i) {
        const double env = MeterAnimation::envelope(i, MeterEngine::barCount);
        EXPECT_EQ(MeterAnimation::recordingTarget(1, 1, env), std::min(1.0, env)) << i;
    }
    EXPECT_EQ(MeterAnimation::recordingTarget(1, 1, MeterAnimation::envelope(4, 9)), 1.0);
    EXPECT_DOUBLE_EQ(MeterAnimation::envelope(0, 9), 0.5);
    // In silence the bars still stir, at 12 percent of their reach.
    EXPECT_DOUBLE_EQ(MeterAnimation::recordingTarget(1, 0, 1), 0.12);

    MeterEngine quiet;
    MeterEngine loud;
    double loudPeak = 0;
    for (int frame = 0; frame < 120; ++frame) {
        quiet.step(frame / 60.0, PillMeterMode::recording, 0);
        loud.step(frame / 60.0, PillMeterMode::recording, 1);
        EXPECT_LE(quiet.bars[4], 0.12 + 1e-12);
        loudPeak = std::max(loudPeak, loud.bars[4]);
    }
    EXPECT_GT(loudPeak, 0.9);
    EXPECT_LE(loudPeak, 1.0);
}

TEST(MeterEngine, ProcessingIsAWaveThatIgnoresTheVoice) {
    MeterEngine quiet;
    MeterEngine loud;
    run(quiet, 60, PillMeterMode::processing, 0, 0);
    run(loud, 60, PillMeterMode::processing, 1, 0);
    EXPECT_EQ(quiet.bars, loud.bars);
    EXPECT_GT(quiet.bars[0], 0.1);
}

TEST(MeterEngine, DoneFallsAwayToACompleteCheckMarkThatRecordingKeeps) {
    MeterEngine engine;
    double now = run(engine, 60, PillMeterMode::recording, 0.8, 0);
    now = run(engine, 14, PillMeterMode::done, 0.8, now);
    EXPECT_LT(engine.doneProgress, 1);
    now = run(engine, 1, PillMeterMode::done, 0.8, now);
    EXPECT_EQ(engine.doneProgress, 1);
    now = run(engine, 30, PillMeterMode::done, 0.8, now);
    EXPECT_EQ(engine.doneProgress, 1);
    EXPECT_LT(*std::max_element(engine.bars.begin(), engine.bars.end()), 0.001);

    run(engine, 5, PillMeterMode::recording, 0.8, now);
    EXPECT_EQ(engine.doneProgress, 1);
}

TEST(MeterEngine, ErrorGlowFadesWhileTheBarsKeepStirringLow) {
    MeterEngine engine;
    double now = run(engine, 60, PillMeterMode::recording, 1, 0);
    now = run(engine, 49, PillMeterMode::error, 1, now);
    EXPECT_GT(engine.errorGlow, 0);
    const MeterEngine before = engine;
    run(engine, 1, PillMeterMode::error, 1, now);
    EXPECT_EQ(engine.errorGlow, 0);
    for (int i = 0; i < MeterEngine::barCount; ++i) {
        EXPECT_NEAR(engine.bars[i], 0.16, 0.11) << i;
        EXPECT_NE(engine.bars[i], before.bars[i]) << i;
    }
}

TEST(PillMeterMode, RawValuesRoundTrip) {
    for (auto mode : {PillMeterMode::recording, PillMeterMode::processing, PillMeterMode::done,
                      PillMeterMode::error}) {
        EXPECT_EQ(pillMeterModeFromRaw(rawValue(mode)), mode);
    }
    EXPECT_EQ(pillMeterModeFromRaw("Done"), std::nullopt);
}

}  // namespace
}  // namespace tevra
