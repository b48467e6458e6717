#pragma once

#include <span>

#include "pill/pill_meter_mode.h"

namespace tevra {

// How the bars move. The pill's meter knows the last four; the HUD's meter also
// rests in idle, where the bars die away.
enum class MeterMotion { idle, recording, processing, done, error };

MeterMotion motionOf(PillMeterMode mode);

// The animation that the pill's meter and the HUD's meter share: a smoothed
// level, a running phase, and a row of bars that each step moves a fixed share
// of the way towards their targets. A step is a fixed amount of animation, not
// scaled by time; the owner decides how often to step.
class MeterAnimation {
public:
    double levelTarget = 0;
    double levelEased = 0;
    double phase = 0;  // radians
    double doneProgress = 0;
    double errorGlow = 0;

    // A level clamped to 0...1; anything that is not a number counts as silence.
    static double clampLevel(double level);
    // Highest in the centre bar (1), half as high at the ends.
    static double envelope(int index, int barCount);
    // The recording bar for a wave value in -1...1: in silence the bars still
    // stir at 12 percent of their reach; never above 1.
    static double recordingTarget(double wave, double levelEased, double envelope);
    // Where bar index is heading in motion; idle heads for 0.
    static double barTarget(MeterMotion motion, int index, int barCount, double phase,
                            double levelEased);

protected:
    // One frame: the level eases, the phase runs on, every bar moves towards its
    // target, and the check mark and the glow advance in done and error.
    void advance(MeterMotion motion, std::span<double> bars);
};

}  // namespace tevra
