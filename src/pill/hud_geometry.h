#pragma once

#include <array>

#include "pill/hud_meter.h"
#include "pill/pill_geometry.h"

namespace tevra {

// The HUD panel's place on the screen, its meter's frame, the shake, and the
// look of each bar.
namespace HudGeometry {

inline constexpr double pillWidth = 128;
inline constexpr double pillHeight = 38;
// The panel's bottom edge stands this far above the bottom of the screen's
// available area.
inline constexpr double bottomMargin = 28;
inline constexpr double meterInsetX = 18;
inline constexpr double meterInsetY = 9;
// The error glow reaches this far beyond the meter's frame.
inline constexpr double glowMarginX = 6;
inline constexpr double glowMarginY = 4;
inline constexpr double barAlphaAtRest = 0.92;
inline constexpr double glowAlpha = 0.16;

// The panel's top left, whole pixels, centred on the available area of the
// screen (Y down) and near its bottom.
PillPoint panelOrigin(const PillRect& availableArea);
// The meter within the panel.
PillRect meterFrame();
// The glow behind the bars in error, in the meter's coordinates.
PillRect glowRect(PillSize meter);
double barAlpha(HudMeter::Mode mode, double barValue, double doneProgress);

struct ShakeStep {
    double delay;   // seconds after the shake starts
    double offset;  // horizontal, from where the panel stood
};
// Wider, then narrower, and back where it started.
const std::array<ShakeStep, 7>& shakeSteps();

}  // namespace HudGeometry
}  // namespace tevra
