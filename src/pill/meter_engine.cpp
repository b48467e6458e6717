#include "pill/meter_engine.h"

namespace tevra {

void MeterEngine::step(double now, PillMeterMode mode, double level) {
    levelTarget = clampLevel(level);
    // Before the rate limit, so that a done or an error that arrives between
    // frames still starts its check mark or its glow afresh.
    if (mode != lastMode) {
        if (mode == PillMeterMode::done) {
            doneProgress = 0;
        } else if (mode == PillMeterMode::error) {
            errorGlow = 1.0;
        }
        lastMode = mode;
    }
    if (lastStep && now - *lastStep < minimumStepInterval) {
        return;
    }
    lastStep = now;
    advance(motionOf(mode), bars);
}

}  // namespace tevra
