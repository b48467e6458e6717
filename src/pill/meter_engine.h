#pragma once

#include <array>
#include <optional>

#include "pill/meter_animation.h"
#include "pill/pill_meter_mode.h"

namespace tevra {

// The model of the pill's nine bars, stepped once per drawn frame. Steps closer
// than 0.014 s to the last one only record the level and the mode, so that the
// animation looks the same on a 60 Hz and a 120 Hz display.
class MeterEngine : public MeterAnimation {
public:
    static constexpr int barCount = 9;
    static constexpr double minimumStepInterval = 0.014;  // seconds

    std::array<double, barCount> bars{};
    PillMeterMode lastMode = PillMeterMode::recording;
    std::optional<double> lastStep;  // seconds on the caller's clock

    // now: seconds on the main queue's clock. A change of mode changes where
    // the bars head, not the bars, so they glide from one animation to the next.
    void step(double now, PillMeterMode mode, double level);
};

}  // namespace tevra
