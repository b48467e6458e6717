#include "capture/paste_chords.h"

#include <string>

#include "base/text.h"

namespace tevra {
namespace {

// The applications that paste with another chord than Ctrl+V, by WM_CLASS
// instance or class name or Wayland app id, lower-cased. Everything else gets Ctrl+V.
struct PasteKeys {
    std::string_view name;
    PasteChord chord;
};
constexpr PasteKeys kPasteKeys[] = {
    // No clipboard key by default; Shift+Insert pastes the primary selection.
    {"xterm", PasteChord::shiftInsertPrimary},
    {"uxterm", PasteChord::shiftInsertPrimary},
    {"urxvt", PasteChord::shiftInsertPrimary},
    {"rxvt", PasteChord::shiftInsertPrimary},
    // Ctrl+V scrolls a page in Emacs and starts a block selection in gVim.
    {"emacs", PasteChord::shiftInsertPrimary},
    {"gvim", PasteChord::shiftInsertPrimary},
    // Terminals, where Ctrl+V is the terminal's own key.
    {"gnome-terminal", PasteChord::ctrlShiftV},
    {"gnome-terminal-server", PasteChord::ctrlShiftV},
    {"konsole", PasteChord::ctrlShiftV},
    {"alacritty", PasteChord::ctrlShiftV},
    {"kitty", PasteChord::ctrlShiftV},
    {"xfce4-terminal", PasteChord::ctrlShiftV},
    {"tilix", PasteChord::ctrlShiftV},
    {"terminator", PasteChord::ctrlShiftV},
    {"terminology", PasteChord::ctrlShiftV},
    {"st-256color", PasteChord::ctrlShiftV},
    {"wezterm", PasteChord::ctrlShiftV},
    {"org.wezfurlong.wezterm", PasteChord::ctrlShiftV},
    {"foot", PasteChord::ctrlShiftV},
    {"sakura", PasteChord::ctrlShiftV},
    {"lxterminal", PasteChord::ctrlShiftV},
    {"qterminal", PasteChord::ctrlShiftV},
    {"mate-terminal", PasteChord::ctrlShiftV},
    {"guake", PasteChord::ctrlShiftV},
    {"tilda", PasteChord::ctrlShiftV},
    {"yakuake", PasteChord::ctrlShiftV},
    {"deepin-terminal", PasteChord::ctrlShiftV},
    {"cool-retro-term", PasteChord::ctrlShiftV},
    {"kgx", PasteChord::ctrlShiftV},
    {"org.gnome.console", PasteChord::ctrlShiftV},
    {"ptyxis", PasteChord::ctrlShiftV},
    {"org.gnome.ptyxis", PasteChord::ctrlShiftV},
    {"terminal", PasteChord::ctrlShiftV},
    {"x-terminal-emulator", PasteChord::ctrlShiftV},
    {"ghostty", PasteChord::ctrlShiftV},
};

}  // namespace

PasteChord pasteChordFor(std::string_view applicationName) {
    const std::string name = text::lowercase(applicationName);
    for (const PasteKeys& keys : kPasteKeys) {
        if (keys.name == name) {
            return keys.chord;
        }
    }
    return PasteChord::ctrlV;
}

std::optional<KeySequence> pasteStrokes(PasteChord chord, const ChordKeyCodes& keys) {
    const unsigned control = keys.control;
    const unsigned shift = keys.shift;
    switch (chord) {
        case PasteChord::ctrlV:
            if (control == 0 || keys.v == 0) {
                return std::nullopt;
            }
            return KeySequence{{control, true}, {keys.v, true}, {keys.v, false}, {control, false}};
        case PasteChord::ctrlShiftV:
            if (control == 0 || shift == 0 || keys.v == 0) {
                return std::nullopt;
            }
            return KeySequence{{control, true}, {shift, true},  {keys.v, true},
                               {keys.v, false}, {shift, false}, {control, false}};
        case PasteChord::shiftInsertPrimary:
            if (shift == 0 || keys.insert == 0) {
                return std::nullopt;
            }
            return KeySequence{
                {shift, true}, {keys.insert, true}, {keys.insert, false}, {shift, false}};
    }
    return std::nullopt;
}

std::optional<KeySequence> copyStrokes(PasteChord chord, const ChordKeyCodes& keys) {
    const unsigned control = keys.control;
    const unsigned shift = keys.shift;
    if (control == 0 || shift == 0 || keys.c == 0) {
        return std::nullopt;
    }
    if (chord == PasteChord::ctrlV) {
        return KeySequence{{control, true}, {keys.c, true}, {keys.c, false}, {control, false}};
    }
    return KeySequence{{control, true}, {shift, true},  {keys.c, true},
                       {keys.c, false}, {shift, false}, {control, false}};
}

}  // namespace tevra
