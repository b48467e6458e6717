#pragma once

#include "base/byte_buffer.h"
#include "capture/sound_cue.h"

// The chime's three cues, synthesised: a short falling pop when work starts, a
// bright bell when the text is in, a low dull tone when it failed. The build
// writes them to WAV files that the sound player loads.
namespace tevra::ChimeTones {

inline constexpr int sampleRate = 44100;

// A mono 16-bit WAV image of the cue.
ByteBuffer wav(ChimeSound sound);

}  // namespace tevra::ChimeTones
