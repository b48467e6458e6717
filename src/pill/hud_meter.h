#pragma once

#include <array>

#include "pill/meter_animation.h"

namespace tevra {

// The model of the HUD's thirteen bars. It shares the pill meter's animation,
// with a fifth mode, idle, and no rate limit: its owner steps it from a timer
// of its own. The level is clamped when it is set, not when stepped.
class HudMeter : public MeterAnimation {
public:
    using Mode = MeterMotion;
    static constexpr int barCount = 13;

    Mode mode = Mode::idle;
    double level = 0;  // as given
    std::array<double, barCount> bars{};

    // Every done restarts the check mark and every error the glow, even when
    // the mode does not change.
    void setMode(Mode newMode);
    void setLevel(double value);
    void step();
};

}  // namespace tevra
