#include "pill/hud_geometry.h"

#include <algorithm>
#include <cmath>

#include "pill/meter_geometry.h"

namespace tevra::HudGeometry {

PillPoint panelOrigin(const PillRect& availableArea) {
    return {std::round(availableArea.midX() - pillWidth / 2),
            std::round(availableArea.bottom() - bottomMargin - pillHeight)};
}

PillRect meterFrame() {
    return {meterInsetX, meterInsetY, pillWidth - 2 * meterInsetX, pillHeight - 2 * meterInsetY};
}

PillRect glowRect(PillSize meter) {
    return {-glowMarginX, -glowMarginY, meter.width + 2 * glowMarginX,
            meter.height + 2 * glowMarginY};
}

double barAlpha(HudMeter::Mode mode, double barValue, double doneProgress) {
    switch (mode) {
        case HudMeter::Mode::processing:
            // Low bars of the wave dim, so the ripple reads as moving light.
            return std::min(1.0, std::min(1.0, barValue / 0.4) * 0.5 + 0.5);
        case HudMeter::Mode::done:
            return barAlphaAtRest * MeterGeometry::doneFade(doneProgress);
        default:
            return barAlphaAtRest;
    }
}

const std::array<ShakeStep, 7>& shakeSteps() {
    static const std::array<ShakeStep, 7> steps = [] {
        constexpr std::array<double, 7> offsets{-7, 7, -5, 5, -3, 3, 0};
        std::array<ShakeStep, 7> result{};
        for (size_t i = 0; i < offsets.size(); ++i) {
            result[i] = {static_cast<double>(i) * 0.045, offsets[i]};
        }
        return result;
    }();
    return steps;
}

}  // namespace tevra::HudGeometry
