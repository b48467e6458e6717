#pragma once

#include <optional>
#include <string_view>

#include "capture/key_injector.h"

namespace tevra {

// The keys that paste in an application.
enum class PasteChord {
    ctrlV,
    ctrlShiftV,          // terminals, where Ctrl+V means something else
    shiftInsertPrimary,  // xterm and the like, Emacs, gVim: Shift+Insert,
                         // with the text in the primary selection too
};

// The paste chord of an application by one of its names: an X11 WM_CLASS
// instance or class, or a Wayland app id. Case does not matter; everything
// not in the table pastes with Ctrl+V.
PasteChord pasteChordFor(std::string_view applicationName);

// The key codes a keyboard gives the chords' keys; 0 where it has none.
struct ChordKeyCodes {
    unsigned control = 0;
    unsigned shift = 0;
    unsigned v = 0;
    unsigned c = 0;
    unsigned insert = 0;
};
// The strokes of the paste chord; nullopt when the keyboard lacks a key of it.
std::optional<KeySequence> pasteStrokes(PasteChord chord, const ChordKeyCodes& keys);
// Ctrl+C, or Ctrl+Shift+C where the paste chord is not Ctrl+V (terminals and
// the like); nullopt when the keyboard lacks a key of it.
std::optional<KeySequence> copyStrokes(PasteChord chord, const ChordKeyCodes& keys);

}  // namespace tevra
