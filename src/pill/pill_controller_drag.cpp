// Dragging a pill over its screen, and the snap of the drop to an edge.
#include <algorithm>
#include <cmath>

#include "pill/pill_controller.h"
#include "pill/pill_metrics.h"

namespace tevra {
namespace {

// Slow in, slow out.
double ease(double t) {
    return t < 0.5 ? 2 * t * t : 1 - std::pow(-2 * t + 2, 2) / 2;
}

PillRect between(const PillRect& from, const PillRect& to, double t) {
    auto mix = [t](double a, double b) { return std::round(a + (b - a) * t); };
    return {mix(from.x, to.x), mix(from.y, to.y), mix(from.width, to.width),
            mix(from.height, to.height)};
}

}  // namespace

void PillController::drag(bool first) {
    const auto home = screen();
    if (!home) {
        return;
    }
    isDragging_ = true;
    glideTimer_.cancel();
    const PillPoint mouse = desktop_.mouseLocation();
    const PillRect frame = panel_->frame();
    if (first) {
        grabOffset_ = {frame.x - mouse.x, frame.y - mouse.y};
    }
    const PillSize size{frame.width, frame.height};
    const PillPoint origin =
        PillPlacement::dragOrigin(mouse, grabOffset_, size, home->visibleFrame);
    const PillRect moved{origin.x, origin.y, size.width, size.height};
    panel_->setFrame(moved);
    panel_->setCapsule(moved, /*animated=*/false);
    center_ = PillPlacement::centerOf(origin, size, home->visibleFrame);
}

void PillController::moveEnd() {
    isDragging_ = false;
    const auto home = screen();
    if (!home) {
        return;
    }
    const PillSize visible{home->visibleFrame.width, home->visibleFrame.height};
    const PillPlace rest = PillPlacement::snap(center_, visible);
    center_ = rest.center;
    state_.setDock(rest.dock);
    // Always to the resting size, whatever the phase in which the drag ended.
    const PillRect target =
        PillPlacement::frameFor(PillMetrics::idleSize(rest.dock), rest, home->visibleFrame);
    glide(panel_->frame(), target);
    const PillSpot spot = PillPlacement::spotOf(rest, visible);
    layout_.set(displayID_, spot.fx, spot.fy, spot.dock);
}

void PillController::glide(const PillRect& from, const PillRect& to) {
    glideTimer_.cancel();
    shrinkWork_.cancel();
    const double started = queue_.now();
    std::weak_ptr<PillController> weak = weak_from_this();
    auto step = [weak, from, to, started] {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        const double t = std::min(1.0, (self->queue_.now() - started) / PillMetrics::snapDuration);
        const PillRect frame = between(from, to, ease(t));
        self->panel_->setFrame(frame);
        self->panel_->setCapsule(frame, /*animated=*/false);
        if (t >= 1) {
            self->glideTimer_.cancel();
        }
    };
    glideTimer_ = queue_.every(PillMetrics::meterFrameInterval, step);
}

}  // namespace tevra
