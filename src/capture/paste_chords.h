#pragma once

#include <string_view>

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

}  // namespace tevra
