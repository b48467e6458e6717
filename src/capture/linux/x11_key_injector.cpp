#include "capture/linux/x11_key_injector.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "base/text.h"

namespace tevra {
namespace {

// WM_CLASS instance or class names of terminal emulators, lower-cased.
constexpr std::string_view kTerminals[] = {
    "xterm",
    "uxterm",
    "urxvt",
    "rxvt",
    "gnome-terminal",
    "gnome-terminal-server",
    "konsole",
    "alacritty",
    "kitty",
    "xfce4-terminal",
    "tilix",
    "terminator",
    "terminology",
    "st-256color",
    "wezterm",
    "org.wezfurlong.wezterm",
    "foot",
    "sakura",
    "lxterminal",
    "qterminal",
    "mate-terminal",
    "guake",
    "tilda",
    "yakuake",
    "deepin-terminal",
    "cool-retro-term",
    "kgx",
    "org.gnome.console",
    "ptyxis",
    "org.gnome.ptyxis",
    "terminal",
    "x-terminal-emulator",
    "ghostty",
};

// Terminals whose only paste key reads the primary selection.
constexpr std::string_view kPrimaryTerminals[] = {"xterm", "uxterm", "urxvt", "rxvt"};

// The modifier keys that are down now and would turn Ctrl+V into another
// chord: Shift, Alt, Super, AltGr. Control is part of the chord anyway, and
// the locks are states, not keys being held.
std::vector<unsigned> heldModifierKeys(Display* display) {
    char keys[32] = {};
    XQueryKeymap(display, keys);
    XModifierKeymap* map = XGetModifierMapping(display);
    if (map == nullptr) {
        return {};
    }
    const KeyCode numLock = XKeysymToKeycode(display, XK_Num_Lock);
    std::vector<unsigned> held;
    for (int index = 0; index < 8; ++index) {
        if (index == LockMapIndex || index == ControlMapIndex) {
            continue;
        }
        for (int slot = 0; slot < map->max_keypermod; ++slot) {
            const KeyCode code = map->modifiermap[index * map->max_keypermod + slot];
            const bool down = code != 0 && (keys[code / 8] & (1 << (code % 8))) != 0;
            if (down && code != numLock &&
                std::find(held.begin(), held.end(), code) == held.end()) {
                held.push_back(code);
            }
        }
    }
    XFreeModifiermap(map);
    return held;
}

}  // namespace

X11KeyInjector::X11KeyInjector(std::shared_ptr<X11Connection> x) : x_(std::move(x)) {}

bool X11KeyInjector::isTerminal(std::string_view wmClassPart) {
    const std::string name = text::lowercase(wmClassPart);
    return std::find(std::begin(kTerminals), std::end(kTerminals), name) != std::end(kTerminals);
}

bool X11KeyInjector::pastesPrimary(std::string_view wmClassPart) {
    const std::string name = text::lowercase(wmClassPart);
    return std::find(std::begin(kPrimaryTerminals), std::end(kPrimaryTerminals), name) !=
           std::end(kPrimaryTerminals);
}

X11KeyInjector::Target X11KeyInjector::activeTarget() const {
    const X11Connection::Window active = x_->activeWindow();
    const auto hint = active ? x_->classHint(active) : std::nullopt;
    if (!hint) {
        return Target::application;
    }
    if (pastesPrimary(hint->instance) || pastesPrimary(hint->className)) {
        return Target::primaryTerminal;
    }
    if (isTerminal(hint->instance) || isTerminal(hint->className)) {
        return Target::terminal;
    }
    return Target::application;
}

bool X11KeyInjector::pasteReadsPrimary() {
    return x_ && activeTarget() == Target::primaryTerminal;
}

bool X11KeyInjector::isAvailable() {
    if (!x_) {
        return false;
    }
    int event = 0;
    int error = 0;
    int major = 0;
    int minor = 0;
    return XTestQueryExtension(x_->display(), &event, &error, &major, &minor) &&
           x_->hasExtension("XInputExtension");
}

std::optional<KeySequence> X11KeyInjector::pasteSequence() {
    if (!x_) {
        return std::nullopt;
    }
    Display* display = x_->display();
    const unsigned control = XKeysymToKeycode(display, XK_Control_L);
    const unsigned v = XKeysymToKeycode(display, XK_v);
    if (control == 0 || v == 0) {
        return std::nullopt;
    }
    const Target target = activeTarget();
    // A modifier the user still holds (the Alt of an Alt+digit, a Shift on
    // its way to the next word) is let go first: Ctrl+Alt+V pastes nowhere.
    // It is not pressed again afterwards, since by then the user may have
    // let go of it, and a synthetic press would stay stuck.
    KeySequence sequence;
    for (unsigned code : heldModifierKeys(display)) {
        sequence.push_back({code, false});
    }
    if (target == Target::application) {
        sequence.insert(sequence.end(), {{control, true}, {v, true}, {v, false}, {control, false}});
        return sequence;
    }
    const unsigned shift = XKeysymToKeycode(display, XK_Shift_L);
    if (shift == 0) {
        return std::nullopt;
    }
    if (target == Target::primaryTerminal) {
        const unsigned insert = XKeysymToKeycode(display, XK_Insert);
        if (insert == 0) {
            return std::nullopt;
        }
        sequence.insert(sequence.end(),
                        {{shift, true}, {insert, true}, {insert, false}, {shift, false}});
        return sequence;
    }
    sequence.insert(
        sequence.end(),
        {{control, true}, {shift, true}, {v, true}, {v, false}, {shift, false}, {control, false}});
    return sequence;
}

std::optional<KeySequence> X11KeyInjector::copySequence() {
    if (!x_) {
        return std::nullopt;
    }
    Display* display = x_->display();
    const unsigned control = XKeysymToKeycode(display, XK_Control_L);
    const unsigned shift = XKeysymToKeycode(display, XK_Shift_L);
    const unsigned c = XKeysymToKeycode(display, XK_c);
    if (control == 0 || shift == 0 || c == 0) {
        return std::nullopt;
    }
    // Held modifiers go first, as for the paste: Ctrl+Alt+C copies nothing.
    KeySequence sequence;
    for (unsigned code : heldModifierKeys(display)) {
        sequence.push_back({code, false});
    }
    if (activeTarget() == Target::application) {
        sequence.insert(sequence.end(), {{control, true}, {c, true}, {c, false}, {control, false}});
    } else {
        sequence.insert(sequence.end(), {{control, true},
                                         {shift, true},
                                         {c, true},
                                         {c, false},
                                         {shift, false},
                                         {control, false}});
    }
    return sequence;
}

void X11KeyInjector::post(const KeySequence& events) {
    if (!x_) {
        return;
    }
    for (const KeyStroke& stroke : events) {
        XTestFakeKeyEvent(x_->display(), stroke.keycode, stroke.down ? True : False, CurrentTime);
    }
    XSync(x_->display(), False);
}

}  // namespace tevra
