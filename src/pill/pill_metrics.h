#pragma once

#include "pill/pill_geometry.h"
#include "pill/pill_phase.h"

namespace tevra {

// The pill's sizes and the delays of its phases, in points and seconds.
namespace PillMetrics {

// The gap between a pill and its edge.
inline constexpr double margin = 12;

inline constexpr PillSize peekSize{244, 250};
inline constexpr PillSize fullSize{320, 412};

// The mouse counts as over a pill within this distance of its panel.
inline constexpr double hoverSlop = 8;
// How often the mouse is looked at while it is near a pill or a card is open.
inline constexpr double trackerInterval = 0.06;
// How long the mouse must stay away before a card closes.
inline constexpr double peekCollapseDelay = 0.35;
inline constexpr double fullCollapseDelay = 8.0;
// A clicked history row is pasted this long after the click.
inline constexpr double repasteDelay = 0.45;
// A panel that shrinks keeps its size this long, while its capsule shrinks inside it.
inline constexpr double shrinkDelay = 0.34;
// The glide of a dropped pill to its edge.
inline constexpr double snapDuration = 0.22;
// How long the outcome of a capture stays on the meter.
inline constexpr double doneCollapseDelay = 0.85;
inline constexpr double errorCollapseDelay = 1.6;
// The meter's frame clock, and the level of the preview.
inline constexpr double meterFrameInterval = 1.0 / 60;
inline constexpr double previewDelay = 0.8;
inline constexpr double previewLevelInterval = 1.0 / 30;

// The recording pill: wider on a vertical edge, where it stands out sideways.
PillSize recordingSize(PillDock dock);
// The resting tab: lying along the edge it sits on.
PillSize idleSize(PillDock dock);
// The panel of a phase on an edge.
PillSize panelSize(PillPhase phase, PillDock dock);

}  // namespace PillMetrics
}  // namespace tevra
