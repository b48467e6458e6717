#include "pill/pill_metrics.h"

namespace tevra::PillMetrics {

PillSize recordingSize(PillDock dock) {
    return isVertical(dock) ? PillSize{92, 56} : PillSize{84, 30};
}

PillSize idleSize(PillDock dock) {
    return isVertical(dock) ? PillSize{26, 54} : PillSize{48, 30};
}

PillSize panelSize(PillPhase phase, PillDock dock) {
    switch (phase) {
        case PillPhase::idle:
            return idleSize(dock);
        case PillPhase::peek:
            return peekSize;
        case PillPhase::full:
            return fullSize;
        case PillPhase::recording:
            return recordingSize(dock);
    }
    return idleSize(dock);
}

}  // namespace tevra::PillMetrics
