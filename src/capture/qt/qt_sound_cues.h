#pragma once

#include "capture/sound_cue.h"

namespace tevra {

// The chime's cues through QSoundEffect, from the WAV files that the build
// synthesises and compiles in. Main thread only, with a running Qt application.
class QtSoundCues : public SoundCueFactory {
public:
    std::unique_ptr<SoundCue> make(ChimeSound sound, double volume) override;

    // Where the cue's WAV lives in the application's resources.
    static const char* resourcePath(ChimeSound sound);
};

}  // namespace tevra
