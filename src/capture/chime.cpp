#include "capture/chime.h"

#include <utility>

namespace tevra {

Chime::Chime(std::shared_ptr<SoundCueFactory> factory) : factory_(std::move(factory)) {}

double Chime::volume(ChimeSound sound) {
    return sound == ChimeSound::start ? 0.3 : 0.35;
}

void Chime::processingStarted() {
    play(ChimeSound::start);
}

void Chime::processingFinished() {
    play(ChimeSound::done);
}

void Chime::processingFailed() {
    play(ChimeSound::fail);
}

void Chime::play(ChimeSound sound) {
    if (!enabled_ || muted_) {
        return;
    }
    Slot& slot = slots_[static_cast<std::size_t>(sound)];
    if (!slot.made) {
        slot.made = true;
        slot.cue = factory_->make(sound, volume(sound));
    }
    if (!slot.cue) {
        return;
    }
    if (slot.cue->isPlaying()) {
        slot.cue->stop();
    }
    slot.cue->play();
}

}  // namespace tevra
