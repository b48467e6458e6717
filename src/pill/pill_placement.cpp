#include "pill/pill_placement.h"

#include <algorithm>
#include <cmath>

#include "pill/pill_metrics.h"

namespace tevra::PillPlacement {
namespace {

using PillMetrics::margin;

// The lower bound first, so that the upper one wins when they cross.
double clampLowerFirst(double value, double lower, double upper) {
    return std::min(std::max(value, lower), upper);
}

}  // namespace

PillPlace initial(const std::optional<PillSpot>& spot, PillSize visible) {
    if (spot) {
        return {spot->dock, {visible.width * spot->fx, visible.height * spot->fy}};
    }
    // Half the idle tab's height above the margin.
    const double halfIdle = PillMetrics::idleSize(PillDock::bottom).height / 2;
    return {PillDock::bottom, {visible.width * 0.5, halfIdle + margin}};
}

PillRect frameFor(PillSize size, const PillPlace& place, const PillRect& visibleFrame) {
    const double w = size.width;
    const double h = size.height;
    const double width = visibleFrame.width;
    const double height = visibleFrame.height;
    // x from the frame's left, y from its bottom (Y up).
    double x = 0;
    double y = 0;
    switch (place.dock) {
        case PillDock::bottom:
            x = place.center.x - w / 2;
            y = margin;
            break;
        case PillDock::top:
            x = place.center.x - w / 2;
            y = height - h - margin;
            break;
        case PillDock::left:
            x = margin;
            y = place.center.y - h / 2;
            break;
        case PillDock::right:
            x = width - w - margin;
            y = place.center.y - h / 2;
            break;
    }
    x = std::round(clampLowerFirst(x, 0, width - w));
    y = std::round(clampLowerFirst(y, 0, height - h));
    return {visibleFrame.x + x, visibleFrame.bottom() - y - h, w, h};
}

PillPoint dragOrigin(PillPoint mouse, PillPoint grabOffset, PillSize panel,
                     const PillRect& visibleFrame) {
    const double x = clampLowerFirst(mouse.x + grabOffset.x, visibleFrame.x,
                                     visibleFrame.x + visibleFrame.width - panel.width);
    const double y = clampLowerFirst(mouse.y + grabOffset.y, visibleFrame.y,
                                     visibleFrame.bottom() - panel.height);
    return {std::round(x), std::round(y)};
}

PillPoint centerOf(PillPoint origin, PillSize panel, const PillRect& visibleFrame) {
    return {origin.x + panel.width / 2 - visibleFrame.x,
            visibleFrame.bottom() - (origin.y + panel.height / 2)};
}

PillDock nearestEdge(PillPoint center, PillSize visible) {
    const std::pair<PillDock, double> distances[] = {
        {PillDock::left, center.x},
        {PillDock::right, visible.width - center.x},
        {PillDock::bottom, center.y},
        {PillDock::top, visible.height - center.y},
    };
    auto best = distances[0];
    for (const auto& candidate : distances) {
        if (candidate.second < best.second) {
            best = candidate;
        }
    }
    return best.first;
}

PillPlace snap(PillPoint center, PillSize visible) {
    const PillDock dock = nearestEdge(center, visible);
    const PillSize idle = PillMetrics::idleSize(dock);
    const double w = idle.width;
    const double h = idle.height;
    switch (dock) {
        case PillDock::left:
            center.x = w / 2 + margin;
            break;
        case PillDock::right:
            center.x = visible.width - margin - w / 2;
            break;
        case PillDock::bottom:
            center.y = h / 2 + margin;
            break;
        case PillDock::top:
            center.y = visible.height - margin - h / 2;
            break;
    }
    center.x = clampLowerFirst(center.x, w / 2, visible.width - w / 2);
    center.y = clampLowerFirst(center.y, h / 2, visible.height - h / 2);
    return {dock, center};
}

PillSpot spotOf(const PillPlace& place, PillSize visible) {
    return {visible.width > 0 ? place.center.x / visible.width : 0.5,
            visible.height > 0 ? place.center.y / visible.height : 0, place.dock};
}

}  // namespace tevra::PillPlacement
