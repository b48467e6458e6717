#include "pill/hud_meter.h"

namespace tevra {

void HudMeter::setMode(Mode newMode) {
    mode = newMode;
    if (mode == Mode::done) {
        doneProgress = 0;
    } else if (mode == Mode::error) {
        errorGlow = 1.0;
    }
}

void HudMeter::setLevel(double value) {
    level = value;
    levelTarget = clampLevel(value);
}

void HudMeter::step() {
    advance(mode, bars);
}

}  // namespace tevra
