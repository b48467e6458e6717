#include "capture/linux/x_keyboard.h"

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>

#include <algorithm>
#include <cstring>

#include "capture/key_symbols.h"
#include "capture/linux/x_error_trap.h"

namespace tevra {

namespace {

// The X server's time stamps are milliseconds.
double seconds(Time serverTime) {
    return static_cast<double>(serverTime) / 1000.0;
}

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
                     std::shared_ptr<OwnGrabs> ownGrabs,
                     std::shared_ptr<XSyntheticKeys> syntheticKeys)
    : queue_(queue),
      talkKeyName_(std::move(talkKey)),
      log_(std::move(log)),
      displayName_(std::move(displayName)),
      ownGrabs_(ownGrabs ? std::move(ownGrabs) : std::make_shared<OwnGrabs>()),
      syntheticKeys_(syntheticKeys ? std::move(syntheticKeys)
                                   : std::make_shared<XSyntheticKeys>()) {
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

DesktopKeyboard::TalkKeyWatch XKeyboard::watchTalkKey(const std::vector<uint32_t>& chordKeys) {
    if (!display_ || xiOpcode_ < 0) {
        return {};
    }
    TalkKeyWatch watch = display_->call([this, &chordKeys](Display* display) {
        TalkKeyWatch result;
        talkKeysym_ = XStringToKeysym(talkKeyName_.c_str());
        if (talkKeysym_ == NoSymbol) {
            result.problem =
                "\"" + talkKeyName_ + "\" is not the name of a key (xev shows the names)";
            return result;
        }
        if (XKeysymToKeycode(display, talkKeysym_) == 0) {
            result.problem = "no key of this keyboard gives \"" + talkKeyName_ +
                             "\" (a layout option such as compose:rctrl or grp:rctrl_toggle "
                             "may have taken it)";
            talkKeysym_ = NoSymbol;
            return result;
        }
        chordKeys_ = chordKeys;
        known_.insert(chordKeys.begin(), chordKeys.end());
        readKeymap(display);
        findXTestDevices(display);

        // Which chord keys another client holds with the talk key, asked now
        // so that the user hears of it at start rather than at the chord.
        const Window root = DefaultRootWindow(display);
        for (uint32_t keysym : chordKeys_) {
            const KeyCode code = XKeysymToKeycode(display, keysym);
            if (code == 0) {
                continue;
            }
            if (grabAllVariants(display, code, talkMask_)) {
                for (unsigned mask : lockVariants(talkMask_)) {
                    XUngrabKey(display, code, mask, root);
                }
            } else {
                result.heldElsewhere.push_back(chordName(keysym));
                chordsReportedHeld_.insert(keysym);
            }
        }

        unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
        XIEventMask mask{XIAllMasterDevices, static_cast<int>(sizeof bits), bits};
        XErrorTrap trap(display);
        XISelectEvents(display, root, &mask, 1);
        result.watching = trap.sync() == 0;
        return result;
    });
    if (log_) {
        if (!watch.problem.empty()) {
            log_("talk key unavailable: " + watch.problem);
        }
        for (const std::string& chord : watch.heldElsewhere) {
            log_("hotkey " + chord + " is held by another program");
        }
    }
    return watch;
}

std::string XKeyboard::chordName(uint32_t keysym) const {
    const char* name = XKeysymToString(keysym);
    return talkKeyName_ + "+" + (name ? name : std::to_string(keysym));
}

bool XKeyboard::grabAllVariants(Display* display, unsigned code, unsigned mask) {
    const Window root = DefaultRootWindow(display);
    const auto variants = lockVariants(mask);
    XErrorTrap trap(display);
    for (unsigned variant : variants) {
        XGrabKey(display, static_cast<int>(code), variant, root, False, GrabModeAsync,
                 GrabModeAsync);
    }
    if (trap.sync() == 0) {
        return true;
    }
    // Half a key is no key: give back the variants that were granted.
    for (unsigned variant : variants) {
        XUngrabKey(display, static_cast<int>(code), variant, root);
    }
    return false;
}

void XKeyboard::findXTestDevices(Display* display) {
    xtestDevices_.clear();
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display, XIAllDevices, &count);
    for (int i = 0; devices && i < count; ++i) {
        // The server names each master's XTest slave "<master> XTEST keyboard".
        const char* name = devices[i].name;
        if (devices[i].use == XISlaveKeyboard && name && std::strstr(name, "XTEST keyboard")) {
            xtestDevices_.insert(devices[i].deviceid);
        }
    }
    XIFreeDeviceInfo(devices);
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
        return grabAllVariants(display, code, maskOf(modifiers));
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
    setGrabbedDown({});
}

void XKeyboard::grabbedKey(uint8_t keycode, bool down) {
    std::set<uint8_t> keys = grabbedDown_;
    if (down) {
        if (keys.empty()) {
            grabActivator_ = keycode;
        }
        keys.insert(keycode);
    } else if (keycode == grabActivator_) {
        // The grab ends with the release of the key that made it active; the
        // other keys' releases go to the application from now on.
        keys.clear();
    } else {
        keys.erase(keycode);
    }
    setGrabbedDown(std::move(keys));
}

void XKeyboard::setGrabbedDown(std::set<uint8_t> keys) {
    grabbedDown_ = std::move(keys);
    ownGrabs_->set(this, !grabbedDown_.empty());
}

void XKeyboard::onXEvent(Display* display, XEvent& event) {
    switch (event.type) {
        case GenericEvent:
            onRawKey(display, event.xcookie);
            break;
        case KeyPress:
            grabbedKey(static_cast<uint8_t>(event.xkey.keycode), true);
            deliver(display, decoder_.taken(static_cast<uint8_t>(event.xkey.keycode), true,
                                            seconds(event.xkey.time)));
            break;
        case KeyRelease:
            if (!isRepeatedRelease(display, event.xkey)) {
                grabbedKey(static_cast<uint8_t>(event.xkey.keycode), false);
                deliver(display, decoder_.taken(static_cast<uint8_t>(event.xkey.keycode), false,
                                                seconds(event.xkey.time)));
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
        const auto keycode = static_cast<uint8_t>(raw->detail);
        // Tevra's own paste is not the user typing.
        const bool ours =
            xtestDevices_.contains(raw->sourceid) && syntheticKeys_->claim(keycode, press);
        if (!ours) {
            if (auto event = decoder_.observed(keycode, press, seconds(raw->time))) {
                deliver(display, *event);
            }
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
            decoder_.setChordKey(code, false);
        }
        heldChords_.clear();
        XFlush(display);
        return;
    }
    for (uint32_t keysym : chordKeys_) {
        const KeyCode code = XKeysymToKeycode(display, keysym);
        if (code == 0) {
            continue;
        }
        if (grabAllVariants(display, code, talkMask_)) {
            heldChords_.push_back(code);
            decoder_.setChordKey(code, true);
        } else if (chordsReportedHeld_.insert(keysym).second && log_) {
            // A chord another program holds with this modifier stays with it.
            log_("hotkey " + chordName(keysym) + " is held by another program");
        }
    }
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
