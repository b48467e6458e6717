#include "capture/linux/x11_key_injector.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace tevra {
namespace {

// Whether a modifier other than the chord's own and the locks is down on the
// core keyboard now.
bool otherModifierDown(Display* display, unsigned chordMask) {
    char keys[32] = {};
    XQueryKeymap(display, keys);
    XModifierKeymap* map = XGetModifierMapping(display);
    if (map == nullptr) {
        return false;
    }
    const KeyCode numLock = XKeysymToKeycode(display, XK_Num_Lock);
    bool held = false;
    for (int index = 0; index < 8 && !held; ++index) {
        if (index == LockMapIndex || (chordMask & (1u << index)) != 0) {
            continue;
        }
        for (int slot = 0; slot < map->max_keypermod; ++slot) {
            const KeyCode code = map->modifiermap[index * map->max_keypermod + slot];
            if (code != 0 && code != numLock && (keys[code / 8] & (1 << (code % 8))) != 0) {
                held = true;
                break;
            }
        }
    }
    XFreeModifiermap(map);
    return held;
}

}  // namespace

X11KeyInjector::X11KeyInjector(std::shared_ptr<X11Connection> x,
                               std::shared_ptr<XSyntheticKeys> syntheticKeys)
    : x_(std::move(x)),
      syntheticKeys_(syntheticKeys ? std::move(syntheticKeys)
                                   : std::make_shared<XSyntheticKeys>()) {}

PasteChord X11KeyInjector::activeChord() const {
    const X11Connection::Window active = x_->activeWindow();
    const auto hint = active ? x_->classHint(active) : std::nullopt;
    if (!hint) {
        return PasteChord::ctrlV;
    }
    // The instance is the more specific name ("gnome-terminal-server" may
    // run under another class).
    const PasteChord byInstance = pasteChordFor(hint->instance);
    return byInstance != PasteChord::ctrlV ? byInstance : pasteChordFor(hint->className);
}

bool X11KeyInjector::pasteReadsPrimary() {
    return x_ && activeChord() == PasteChord::shiftInsertPrimary;
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

bool X11KeyInjector::modifiersHeld() {
    if (!x_) {
        return false;
    }
    switch (activeChord()) {
        case PasteChord::ctrlV:
            return otherModifierDown(x_->display(), ControlMask);
        case PasteChord::ctrlShiftV:
            return otherModifierDown(x_->display(), ControlMask | ShiftMask);
        case PasteChord::shiftInsertPrimary:
            return otherModifierDown(x_->display(), ShiftMask);
    }
    return false;
}

std::optional<KeySequence> X11KeyInjector::pasteSequence() {
    if (!x_) {
        return std::nullopt;
    }
    Display* display = x_->display();
    const unsigned control = XKeysymToKeycode(display, XK_Control_L);
    const unsigned shift = XKeysymToKeycode(display, XK_Shift_L);
    const unsigned v = XKeysymToKeycode(display, XK_v);
    const unsigned insert = XKeysymToKeycode(display, XK_Insert);
    switch (activeChord()) {
        case PasteChord::ctrlV:
            if (control == 0 || v == 0) {
                return std::nullopt;
            }
            return KeySequence{{control, true}, {v, true}, {v, false}, {control, false}};
        case PasteChord::ctrlShiftV:
            if (control == 0 || shift == 0 || v == 0) {
                return std::nullopt;
            }
            return KeySequence{{control, true}, {shift, true},  {v, true},
                               {v, false},      {shift, false}, {control, false}};
        case PasteChord::shiftInsertPrimary:
            if (shift == 0 || insert == 0) {
                return std::nullopt;
            }
            return KeySequence{{shift, true}, {insert, true}, {insert, false}, {shift, false}};
    }
    return std::nullopt;
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
    if (activeChord() == PasteChord::ctrlV) {
        return KeySequence{{control, true}, {c, true}, {c, false}, {control, false}};
    }
    // Terminals and the other applications with their own paste keys.
    KeySequence sequence{{control, true}, {shift, true},  {c, true},
                         {c, false},      {shift, false}, {control, false}};
    return sequence;
}

void X11KeyInjector::post(const KeySequence& events) {
    if (!x_) {
        return;
    }
    syntheticKeys_->expect(events);
    for (const KeyStroke& stroke : events) {
        XTestFakeKeyEvent(x_->display(), stroke.keycode, stroke.down ? True : False, CurrentTime);
    }
    XSync(x_->display(), False);
}

}  // namespace tevra
