#pragma once

#include <optional>

#include "pill/pill_geometry.h"
#include "pill/pill_phase.h"

namespace tevra {

// A remembered place on one screen: the pill's centre as fractions of the
// visible frame's width and height, measured from its lower left corner.
struct PillSpot {
    double fx = 0.5;
    double fy = 0;
    PillDock dock = PillDock::bottom;
    friend bool operator==(const PillSpot&, const PillSpot&) = default;
};

// Where a pill stands: its edge, and its centre in points from the lower
// left corner of the screen's visible frame, Y up (as the remembered spots
// are). Frames and mouse locations are on the screen, Y down.
struct PillPlace {
    PillDock dock = PillDock::bottom;
    PillPoint center;
    friend bool operator==(const PillPlace&, const PillPlace&) = default;
};

// The arithmetic of docking: a frame from a centre and an edge, a drag that
// follows the mouse over the screen, and the snap of a dropped pill to the
// nearest edge.
namespace PillPlacement {

// A pill's first place on a visible frame of that size: the remembered spot,
// or the middle of the bottom edge.
PillPlace initial(const std::optional<PillSpot>& spot, PillSize visible);

// The panel of that size for a pill at place: against its edge, centred on
// the centre along it, kept inside the visible frame (when it is larger
// than the frame, its far side wins), in whole points.
PillRect frameFor(PillSize size, const PillPlace& place, const PillRect& visibleFrame);

// The panel's origin while dragged: the mouse plus where it grabbed the
// panel, kept inside the visible frame, in whole points.
PillPoint dragOrigin(PillPoint mouse, PillPoint grabOffset, PillSize panel,
                     const PillRect& visibleFrame);
// The centre of a panel at origin, as a place measures it.
PillPoint centerOf(PillPoint origin, PillSize panel, const PillRect& visibleFrame);

// The edge nearest to a centre; a tie goes to left, then right, then bottom.
PillDock nearestEdge(PillPoint center, PillSize visible);
// Where a pill dropped with that centre comes to rest: against its nearest
// edge, at the idle size of that edge.
PillPlace snap(PillPoint center, PillSize visible);

// The spot that remembers a place on a visible frame of that size.
PillSpot spotOf(const PillPlace& place, PillSize visible);

}  // namespace PillPlacement
}  // namespace tevra
