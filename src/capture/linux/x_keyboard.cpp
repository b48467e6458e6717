#include "capture/linux/x_keyboard.h"

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <algorithm>

#include "capture/key_symbols.h"
#include "capture/linux/x_error_trap.h"

namespace tevra {

namespace {

constexpr const char* defaultTalkKey = "Control_R";

bool hasXInput2(Display* display, int& opcode) {
    int event = 0;
    int error = 0;
    if (!XQueryExtension(display, "XInputExtension", &opcode, &event, &error)) {
        return false;
    }
    // Raw events reach the root window whoever holds the keyboard only from 2.1.
    int major = 2;
    int minor = 2;
    return XIQueryVersion(display, &major, &minor) == Success &&
           (major > 2 || (major == 2 && minor >= 1));
}

}  // namespace

XKeyboard::XKeyboard(MainQueue& queue, std::string talkKey, LogLine log, std::string displayName,
                     std::shared_ptr<OwnGrabs> ownGrabs)
    : queue_(queue),
      talkKeyName_(std::move(talkKey)),
      log_(std::move(log)),
      displayName_(std::move(displayName)),
      ownGrabs_(ownGrabs ? std::move(ownGrabs) : std::make_shared<OwnGrabs>()) {
    known_.insert(KeySyms::chordKeys.begin(), KeySyms::chordKeys.end());
    known_.insert(KeySyms::escape);
}

XKeyboard::~XKeyboard() {
    close();
}

bool XKeyboard::open(EventHandler onEvent) {
    if (display_) {
        return true;
    }
    std::string error;
    display_ = XDisplayThread::open(displayName_, error);
    if (!display_) {
        if (log_) {
            log_("keyboard unavailable: " + error);
        }
        return false;
    }
    display_->call([this, onEvent = std::move(onEvent)](Display* display) mutable {
        onEvent_ = std::move(onEvent);
        // Auto-repeat then sends presses only, so a release is always a release.
        Bool supported = False;
        detectableRepeat_ = XkbSetDetectableAutoRepeat(display, True, &supported) && supported;
        readKeymap(display);
    });
    display_->setEventHandler(
        [this](Display* display, XEvent& event) { onXEvent(display, event); });
    return true;
}

bool XKeyboard::inputControlAvailable() {
    if (!display_) {
        return false;
    }
    std::string missing = display_->call([this](Display* display) -> std::string {
        int event = 0;
        int error = 0;
        int major = 0;
        int minor = 0;
        if (!XTestQueryExtension(display, &event, &error, &major, &minor)) {
            return "XTest";
        }
        if (!hasXInput2(display, xiOpcode_)) {
            return "XInput 2.1";
        }
        return {};
    });
    if (!missing.empty() && log_) {
        log_("input control unavailable: the X display has no " + missing);
    }
    return missing.empty();
}

bool XKeyboard::watchTalkKey(const std::vector<uint32_t>& chordKeys) {
    if (!display_ || xiOpcode_ < 0) {
        return false;
    }
    struct Outcome {
        bool watching = false;
        bool fellBack = false;
    };
    const Outcome outcome = display_->call([this, &chordKeys](Display* display) {
        Outcome result;
        talkKeysym_ = XStringToKeysym(talkKeyName_.c_str());
        if (talkKeysym_ == NoSymbol || XKeysymToKeycode(display, talkKeysym_) == 0) {
            talkKeysym_ = XStringToKeysym(defaultTalkKey);
            result.fellBack = true;
        }
        chordKeys_ = chordKeys;
        known_.insert(chordKeys.begin(), chordKeys.end());
        readKeymap(display);

        unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
        XIEventMask mask{XIAllMasterDevices, static_cast<int>(sizeof bits), bits};
        XErrorTrap trap(display);
        XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
        result.watching = trap.sync() == 0;
        return result;
    });
    if (outcome.fellBack && log_) {
        log_("talk key \"" + talkKeyName_ + "\" is not a key here — using " + defaultTalkKey);
    }
    return outcome.watching;
}

bool XKeyboard::grab(uint32_t keysym, Modifiers modifiers) {
    if (!display_) {
        return false;
    }
    return display_->call([this, keysym, modifiers](Display* display) {
        const KeyCode code = XKeysymToKeycode(display, keysym);
        if (code == 0) {
            return false;
        }
        known_.insert(keysym);
        decoder_.setKeysym(code, keysym);
        const Window root = DefaultRootWindow(display);
        const auto variants = lockVariants(maskOf(modifiers));
        XErrorTrap trap(display);
        for (unsigned mask : variants) {
            XGrabKey(display, code, mask, root, False, GrabModeAsync, GrabModeAsync);
        }
        if (trap.sync() == 0) {
            return true;
        }
        // Half a key is no key: give back the variants that were granted.
        for (unsigned mask : variants) {
            XUngrabKey(display, code, mask, root);
        }
        return false;
    });
}

void XKeyboard::ungrab(uint32_t keysym, Modifiers modifiers) {
    if (!display_) {
        return;
    }
    display_->call([this, keysym, modifiers](Display* display) {
        const KeyCode code = XKeysymToKeycode(display, keysym);
        if (code == 0) {
            return;
        }
        for (unsigned mask : lockVariants(maskOf(modifiers))) {
            XUngrabKey(display, code, mask, DefaultRootWindow(display));
        }
        XFlush(display);
    });
}

void XKeyboard::close() {
    // Closing the connection gives back every grab the server holds for it.
    display_.reset();
    onEvent_ = nullptr;
    heldChords_.clear();
    ownGrabs_->add(-static_cast<int>(grabbedDown_.size()));
    grabbedDown_.clear();
}

void XKeyboard::grabbedKey(uint8_t keycode, bool down) {
    if (down ? grabbedDown_.insert(keycode).second : grabbedDown_.erase(keycode) > 0) {
        ownGrabs_->add(down ? 1 : -1);
    }
}

void XKeyboard::onXEvent(Display* display, XEvent& event) {
    switch (event.type) {
        case GenericEvent:
            onRawKey(display, event.xcookie);
            break;
        case KeyPress:
            grabbedKey(static_cast<uint8_t>(event.xkey.keycode), true);
            deliver(display, decoder_.taken(static_cast<uint8_t>(event.xkey.keycode), true));
            break;
        case KeyRelease:
            if (!isRepeatedRelease(display, event.xkey)) {
                grabbedKey(static_cast<uint8_t>(event.xkey.keycode), false);
                deliver(display, decoder_.taken(static_cast<uint8_t>(event.xkey.keycode), false));
            }
            break;
        case MappingNotify:
            XRefreshKeyboardMapping(&event.xmapping);
            readKeymap(display);
            break;
        default:
            break;
    }
}

void XKeyboard::onRawKey(Display* display, XGenericEventCookie& cookie) {
    if (cookie.extension != xiOpcode_ || !XGetEventData(display, &cookie)) {
        return;
    }
    if (cookie.evtype == XI_RawKeyPress || cookie.evtype == XI_RawKeyRelease) {
        const auto* raw = static_cast<const XIRawEvent*>(cookie.data);
        const bool press = cookie.evtype == XI_RawKeyPress;
        if (auto event = decoder_.observed(static_cast<uint8_t>(raw->detail), press)) {
            deliver(display, *event);
        }
    }
    XFreeEventData(display, &cookie);
}

void XKeyboard::deliver(Display* display, const Event& event) {
    using Kind = Event::Kind;
    if ((event.kind == Kind::talkKeyDown || event.kind == Kind::talkKeyUp) && !event.repeat) {
        // Before the event goes out, so that a chord key struck right after
        // the talk key is already held.
        holdChordKeys(display, event.kind == Kind::talkKeyDown);
    }
    post(event);
}

bool XKeyboard::isRepeatedRelease(Display* display, const XKeyEvent& release) {
    // Without detectable auto-repeat a repeat arrives as a release and a press
    // with the same time stamp.
    if (detectableRepeat_ || XEventsQueued(display, QueuedAfterReading) == 0) {
        return false;
    }
    XEvent next;
    XPeekEvent(display, &next);
    return next.type == KeyPress && next.xkey.keycode == release.keycode &&
           next.xkey.time == release.time;
}

void XKeyboard::holdChordKeys(Display* display, bool hold) {
    const Window root = DefaultRootWindow(display);
    if (!hold) {
        // A chord key still down keeps its active grab until its own release,
        // so that release comes here too.
        for (KeyCode code : heldChords_) {
            for (unsigned mask : lockVariants(talkMask_)) {
                XUngrabKey(display, code, mask, root);
            }
        }
        heldChords_.clear();
        return;
    }
    XErrorTrap trap(display);
    for (uint32_t keysym : chordKeys_) {
        const KeyCode code = XKeysymToKeycode(display, keysym);
        if (code == 0) {
            continue;
        }
        heldChords_.push_back(code);
        for (unsigned mask : lockVariants(talkMask_)) {
            XGrabKey(display, code, mask, root, False, GrabModeAsync, GrabModeAsync);
        }
    }
    // A chord another program holds with this modifier stays with it and passes.
    trap.sync();
}

void XKeyboard::readKeymap(Display* display) {
    int minCode = 0;
    int maxCode = 0;
    XDisplayKeycodes(display, &minCode, &maxCode);
    for (int code = minCode; code <= maxCode && code < 256; ++code) {
        decoder_.setKeysym(static_cast<uint8_t>(code),
                           static_cast<uint32_t>(XkbKeycodeToKeysym(display, code, 0, 0)));
    }
    // A key whose symbol sits on a shifted level (the digits of a French
    // layout) still means that symbol here.
    for (uint32_t keysym : known_) {
        if (const KeyCode code = XKeysymToKeycode(display, keysym)) {
            decoder_.setKeysym(code, keysym);
        }
    }

    const KeyCode talkCode = talkKeysym_ == NoSymbol ? 0 : XKeysymToKeycode(display, talkKeysym_);
    decoder_.setTalkKey(talkCode ? std::optional<uint8_t>(talkCode) : std::nullopt);
    const KeyCode numLockCode = XKeysymToKeycode(display, XK_Num_Lock);
    talkMask_ = 0;
    numLockMask_ = 0;
    XModifierKeymap* modifiers = XGetModifierMapping(display);
    for (int index = 0; index < 8; ++index) {
        for (int slot = 0; slot < modifiers->max_keypermod; ++slot) {
            const KeyCode code = modifiers->modifiermap[index * modifiers->max_keypermod + slot];
            if (code != 0 && code == talkCode) {
                talkMask_ |= 1u << index;
            }
            if (code != 0 && code == numLockCode) {
                numLockMask_ |= 1u << index;
            }
        }
    }
    XFreeModifiermap(modifiers);
}

std::vector<unsigned> XKeyboard::lockVariants(unsigned mask) const {
    std::vector<unsigned> variants;
    for (unsigned locks : {0u, unsigned{LockMask}, numLockMask_, LockMask | numLockMask_}) {
        const unsigned variant = mask | locks;
        if (std::find(variants.begin(), variants.end(), variant) == variants.end()) {
            variants.push_back(variant);
        }
    }
    return variants;
}

unsigned XKeyboard::maskOf(Modifiers modifiers) const {
    switch (modifiers) {
        case Modifiers::none:
            return 0;
        case Modifiers::alt:
            return Mod1Mask;
        case Modifiers::talkKey:
            return talkMask_;
    }
    return 0;
}

void XKeyboard::post(const Event& event) {
    if (onEvent_) {
        queue_.post([handler = onEvent_, event] { handler(event); });
    }
}

}  // namespace tevra
