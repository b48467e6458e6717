#include "pill/meter_animation.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tevra {
namespace {

// The share of the distance to its target that a bar covers in one step.
double approach(MeterMotion motion) {
    switch (motion) {
        case MeterMotion::recording:
            return 0.35;
        case MeterMotion::processing:
            return 0.2;
        case MeterMotion::done:
            return 0.28;
        case MeterMotion::error:
            return 0.3;
        case MeterMotion::idle:
            return 0.2;
    }
    return 0;
}

}  // namespace

MeterMotion motionOf(PillMeterMode mode) {
    switch (mode) {
        case PillMeterMode::recording:
            return MeterMotion::recording;
        case PillMeterMode::processing:
            return MeterMotion::processing;
        case PillMeterMode::done:
            return MeterMotion::done;
        case PillMeterMode::error:
            return MeterMotion::error;
    }
    return MeterMotion::recording;
}

double MeterAnimation::clampLevel(double level) {
    if (std::isnan(level)) {
        return 0;
    }
    return std::clamp(level, 0.0, 1.0);
}

double MeterAnimation::envelope(int index, int barCount) {
    const double centre = (barCount - 1) / 2.0;
    if (centre <= 0) {
        return 1;
    }
    const double distance = std::abs(index - centre) / centre;
    return std::cos(distance * std::numbers::pi * 0.5) * 0.5 + 0.5;
}

double MeterAnimation::recordingTarget(double wave, double levelEased, double envelope) {
    return std::min(1.0, (wave * 0.45 + 0.55) * (levelEased * 0.88 + 0.12) * envelope);
}

double MeterAnimation::barTarget(MeterMotion motion, int index, int barCount, double phase,
                                 double levelEased) {
    switch (motion) {
        case MeterMotion::recording:
            return recordingTarget(std::sin(phase * 1.1 + index * 0.7), levelEased,
                                   envelope(index, barCount));
        case MeterMotion::processing:
            // A wave that runs the other way, independent of the voice.
            return (std::sin(phase * 1.4 - index * 0.55) * 0.5 + 0.5) * 0.34 *
                       envelope(index, barCount) +
                   0.14;
        case MeterMotion::error:
            return std::sin(phase + index) * 0.1 + 0.16;
        case MeterMotion::done:
        case MeterMotion::idle:
            return 0;
    }
    return 0;
}

void MeterAnimation::advance(MeterMotion motion, std::span<double> bars) {
    levelEased += (levelTarget - levelEased) * 0.25;
    phase += 0.13;
    const int barCount = static_cast<int>(bars.size());
    for (int i = 0; i < barCount; ++i) {
        double& bar = bars[static_cast<size_t>(i)];
        if (motion == MeterMotion::idle) {
            bar *= 0.8;
        } else {
            bar += (barTarget(motion, i, barCount, phase, levelEased) - bar) * approach(motion);
        }
    }
    if (motion == MeterMotion::done) {
        doneProgress = std::min(1.0, doneProgress + 0.07);
    } else if (motion == MeterMotion::error) {
        errorGlow = std::max(0.0, errorGlow - 0.02);
    }
}

}  // namespace tevra
