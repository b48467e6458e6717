#pragma once

#include <span>

#include "pill/meter_animation.h"
#include "pill/pill_geometry.h"

class QPainter;

namespace tevra {

// The bars of a meter, drawn alike on the HUD and on the pill: white, orange
// with a glow in a failure, fading to a white check mark when done.
namespace MeterPainter {

struct Frame {
    std::span<const double> bars;
    MeterMotion motion = MeterMotion::idle;
    double doneProgress = 0;
    double errorGlow = 0;
};

// Paints into a meter of that size at the painter's origin; the glow of a
// failure reaches HudGeometry's glow margins beyond it.
void paint(QPainter& painter, PillSize size, const Frame& frame);

}  // namespace MeterPainter
}  // namespace tevra
