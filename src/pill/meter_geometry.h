#pragma once

#include <array>

#include "pill/pill_geometry.h"

namespace tevra {

// Where a meter's bars and check mark go in a meter of a given size, so that a
// view only paints. Coordinates have their origin at the meter's top left.
namespace MeterGeometry {

inline constexpr double barWidth = 2.5;
inline constexpr double minimumBarHeight = 2.5;
inline constexpr double checkLineWidth = 2.4;

// The distance from one bar's left edge to the next: the bars span the width.
double barStep(int barCount, double width);
// Bar index for a value (clamped to 0...1), at least minimumBarHeight high and
// at most the meter's height, centred vertically.
PillRect barRect(int index, int barCount, double value, PillSize size);
// The bars fade out in the first 1/1.4 of the check mark's progress.
double doneFade(double doneProgress);
// Eases from 0.7 to 1 as the check mark is drawn in.
double checkScale(double doneProgress);

struct CheckMark {
    std::array<PillPoint, 3> points;  // left arm, bottom, right tip
    double radius = 0;
};
// A check mark about the meter's centre, its radius half the height at full scale.
CheckMark checkMark(double doneProgress, PillSize size);

}  // namespace MeterGeometry
}  // namespace tevra
