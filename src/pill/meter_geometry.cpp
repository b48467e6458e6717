#include "pill/meter_geometry.h"

#include <algorithm>
#include <cmath>

#include "pill/meter_animation.h"

namespace tevra::MeterGeometry {

double barStep(int barCount, double width) {
    if (barCount < 2) {
        return 0;
    }
    return (width - barCount * barWidth) / (barCount - 1) + barWidth;
}

PillRect barRect(int index, int barCount, double value, PillSize size) {
    const double height =
        (size.height - minimumBarHeight) * MeterAnimation::clampLevel(value) + minimumBarHeight;
    return {index * barStep(barCount, size.width), (size.height - height) / 2, barWidth, height};
}

double doneFade(double doneProgress) {
    return std::max(0.0, 1 - 1.4 * doneProgress);
}

double checkScale(double doneProgress) {
    const double eased = 1 - std::pow(1 - doneProgress, 3);
    return eased * 0.3 + 0.7;
}

CheckMark checkMark(double doneProgress, PillSize size) {
    const double r = checkScale(doneProgress) * size.height / 2;
    const double cx = size.width / 2;
    const double cy = size.height / 2;
    // Drawn Y up, the mark runs (-0.42, 0.02), (-0.1, -0.3), (0.46, 0.34) in
    // units of r; Y down flips the sign of each y.
    return {{PillPoint{cx - 0.42 * r, cy - 0.02 * r}, PillPoint{cx - 0.1 * r, cy + 0.3 * r},
             PillPoint{cx + 0.46 * r, cy - 0.34 * r}},
            r};
}

}  // namespace tevra::MeterGeometry
