#include "capture/hotkey_monitor.h"

#include <algorithm>

namespace tevra {

namespace {

using Kind = HotkeyAction::Kind;

}  // namespace

HotkeyMonitor::HotkeyMonitor(MainQueue& queue, std::unique_ptr<DesktopKeyboard> keyboard,
                             int slotCount, LogLine log)
    : slotCount_(std::clamp(slotCount, 1, static_cast<int>(slotKeyCodes.size()))),
      queue_(queue),
      keyboard_(std::move(keyboard)),
      log_(std::move(log)) {}

HotkeyMonitor::~HotkeyMonitor() {
    keyboard_->close();
}

bool HotkeyMonitor::registerKey(uint32_t keysym, HotkeyAction action) {
    if (!keyboard_->grab(keysym, DesktopKeyboard::Modifiers::alt)) {
        // The digit keys' symbols are their characters.
        const char digit = static_cast<char>(keysym);
        if (log_) {
            log_(std::string("hotkey ⌥") + digit + " is held by another program");
        }
        heldElsewhere_.push_back(std::string("Alt+") + digit);
        return false;
    }
    hotKeyRefs_.push_back({keysym, action});
    return true;
}

std::optional<std::string> HotkeyMonitor::start() {
    std::weak_ptr<HotkeyMonitor> weak = weak_from_this();
    handlerInstalled_ = keyboard_->open([weak](const DesktopKeyboard::Event& event) {
        if (auto self = weak.lock()) {
            self->handle(event);
        }
    });
    if (!handlerInstalled_) {
        return std::nullopt;
    }
    bool anySlot = false;
    for (int i = 0; i < slotCount_; ++i) {
        if (registerKey(slotKeyCodes[static_cast<size_t>(i)], {Kind::slot, i})) {
            anySlot = true;
        }
    }
    // The fixed keys are a bonus: without them the slots still work.
    registerKey(KeySyms::digit(7), {Kind::select});
    registerKey(KeySyms::digit(8), {Kind::translateSelection});
    registerKey(KeySyms::digit(9), {Kind::translateClipboard});
    registerKey(KeySyms::digit(0), {Kind::dictateTranslate});
    if (log_) {
        log_("hotkeys registered: ⌥1…⌥" + std::to_string(slotCount_) +
             " + ⌥7 select + ⌥8/⌥9/⌥0 translate");
    }
    if (!anySlot) {
        // Without a slot key there is no dictation; give back what was taken.
        stop();
        return std::nullopt;
    }
    return "hotkey";
}

void HotkeyMonitor::stop() {
    for (const HotKey& key : hotKeyRefs_) {
        keyboard_->ungrab(key.keysym, DesktopKeyboard::Modifiers::alt);
    }
    hotKeyRefs_.clear();
    disableCancelKey();
    keyboard_->close();
    handlerInstalled_ = false;
}

void HotkeyMonitor::enableCancelKey() {
    if (!handlerInstalled_ || cancelRef_) {
        return;
    }
    // Another program holding Esc is not an error: the capture ends by its key.
    cancelRef_ = keyboard_->grab(KeySyms::escape, DesktopKeyboard::Modifiers::none);
}

void HotkeyMonitor::disableCancelKey() {
    if (!cancelRef_) {
        return;
    }
    keyboard_->ungrab(KeySyms::escape, DesktopKeyboard::Modifiers::none);
    cancelRef_ = false;
}

std::optional<HotkeyAction> HotkeyMonitor::actionOf(uint32_t keysym) const {
    if (keysym == KeySyms::escape) {
        return cancelRef_ ? std::optional(HotkeyAction{Kind::cancel}) : std::nullopt;
    }
    for (const HotKey& key : hotKeyRefs_) {
        if (key.keysym == keysym) {
            return key.action;
        }
    }
    return std::nullopt;
}

void HotkeyMonitor::handle(const DesktopKeyboard::Event& event) {
    using EventKind = DesktopKeyboard::Event::Kind;
    // A held hot key is one press and one release, whatever the keyboard repeats.
    if (!handlerInstalled_ || event.repeat) {
        return;
    }
    if (event.kind != EventKind::keyDown && event.kind != EventKind::keyUp) {
        return;
    }
    const auto action = actionOf(event.keysym);
    if (!action) {
        return;
    }
    if (event.kind == EventKind::keyDown) {
        presses_.pressed(*action, event.time);
    } else {
        presses_.released(*action, event.time);
    }
}

}  // namespace tevra
