#pragma once

#include <array>
#include <memory>

#include "capture/sound_cue.h"

namespace tevra {

// Tells the user by ear how a dictation goes. Each cue is made once, on first
// use; a cue that cannot be made is skipped silently from then on. A cue that
// is still playing starts again from the beginning. Main thread only.
class Chime {
public:
    explicit Chime(std::shared_ptr<SoundCueFactory> factory);

    bool enabled() const { return enabled_; }
    // Off: nothing plays, and nothing is made to play later.
    void setEnabled(bool enabled) { enabled_ = enabled; }
    // Muted: nothing plays for a while, whatever the setting. The notetaker
    // records the system's sound while a call lasts, and a cue of ours would
    // end up in the other party's words.
    void setMuted(bool muted) { muted_ = muted; }
    bool muted() const { return muted_; }

    void processingStarted();
    void processingFinished();
    void processingFailed();

    static double volume(ChimeSound sound);

private:
    struct Slot {
        bool made = false;
        std::unique_ptr<SoundCue> cue;
    };

    void play(ChimeSound sound);

    std::shared_ptr<SoundCueFactory> factory_;
    bool enabled_ = true;
    bool muted_ = false;
    std::array<Slot, 3> slots_;
};

}  // namespace tevra
