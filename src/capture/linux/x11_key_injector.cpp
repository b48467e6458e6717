#include "capture/linux/x11_key_injector.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace tevra {
namespace {

// Whether a key is down on the core keyboard now that would spoil the chord:
// a modifier other than the chord's own and the locks, or a key that is no
// modifier at all (a hotkey's own key, whose grab takes the chord's events
// until it is let go).
bool keyInTheWay(Display* display, unsigned chordMask) {
    char keys[32] = {};
    XQueryKeymap(display, keys);
    XModifierKeymap* map = XGetModifierMapping(display);
    if (map == nullptr) {
        return false;
    }
    const KeyCode numLock = XKeysymToKeycode(display, XK_Num_Lock);
    std::array<bool, 256> allowed{};  // modifiers that leave the chord as it is
    std::array<bool, 256> modifier{};
    for (int index = 0; index < 8; ++index) {
        const bool harmless = index == LockMapIndex || (chordMask & (1u << index)) != 0;
        for (int slot = 0; slot < map->max_keypermod; ++slot) {
            const KeyCode code = map->modifiermap[index * map->max_keypermod + slot];
            if (code != 0) {
                modifier[code] = true;
                allowed[code] = allowed[code] || harmless || code == numLock;
            }
        }
    }
    XFreeModifiermap(map);
    for (int code = 8; code < 256; ++code) {
        if ((keys[code / 8] & (1 << (code % 8))) != 0 && (!modifier[code] || !allowed[code])) {
            return true;
        }
    }
    return false;
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
            return keyInTheWay(x_->display(), ControlMask);
        case PasteChord::ctrlShiftV:
            return keyInTheWay(x_->display(), ControlMask | ShiftMask);
        case PasteChord::shiftInsertPrimary:
            return keyInTheWay(x_->display(), ShiftMask);
    }
    return false;
}

ChordKeyCodes X11KeyInjector::chordKeys() const {
    Display* display = x_->display();
    return {XKeysymToKeycode(display, XK_Control_L), XKeysymToKeycode(display, XK_Shift_L),
            XKeysymToKeycode(display, XK_v), XKeysymToKeycode(display, XK_c),
            XKeysymToKeycode(display, XK_Insert)};
}

std::optional<KeySequence> X11KeyInjector::pasteSequence() {
    if (!x_) {
        return std::nullopt;
    }
    return pasteStrokes(activeChord(), chordKeys());
}

std::optional<KeySequence> X11KeyInjector::copySequence() {
    if (!x_) {
        return std::nullopt;
    }
    return copyStrokes(activeChord(), chordKeys());
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
