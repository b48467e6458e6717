#pragma once

#include <memory>

namespace tevra {

// The three cues of a dictation: work has started, text is in, it failed.
enum class ChimeSound { start, done, fail };

// One loaded sound that can be played from the start again and again.
class SoundCue {
public:
    virtual ~SoundCue() = default;
    virtual bool isPlaying() = 0;
    virtual void stop() = 0;
    virtual void play() = 0;
};

// Makes the cues; the platform's sound player stands behind it.
class SoundCueFactory {
public:
    virtual ~SoundCueFactory() = default;
    // nullptr when the sound cannot be had.
    virtual std::unique_ptr<SoundCue> make(ChimeSound sound, double volume) = 0;
};

}  // namespace tevra
