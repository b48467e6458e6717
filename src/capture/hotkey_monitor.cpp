#include "capture/hotkey_monitor.h"

#include <algorithm>

namespace tevra {

namespace {

constexpr int cancelIdentifier = 100;
constexpr int selectIdentifier = 200;
constexpr int translateSelectionIdentifier = 300;
constexpr int translateClipboardIdentifier = 301;
constexpr int dictateTranslateIdentifier = 302;

void call(const std::function<void()>& callback) {
    if (callback) {
        callback();
    }
}

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

bool HotkeyMonitor::capturing() const {
    return isCapturing && isCapturing();
}

bool HotkeyMonitor::registerKey(uint32_t keysym, int identifier) {
    if (!keyboard_->grab(keysym, DesktopKeyboard::Modifiers::alt)) {
        // The digit keys' symbols are their characters.
        const char digit = static_cast<char>(keysym);
        if (log_) {
            log_(std::string("hotkey ⌥") + digit + " is held by another program");
        }
        heldElsewhere_.push_back(std::string("Alt+") + digit);
        return false;
    }
    hotKeyRefs_.push_back({keysym, identifier});
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
        if (registerKey(slotKeyCodes[static_cast<size_t>(i)], i + 1)) {
            anySlot = true;
        }
    }
    // The fixed keys are a bonus: without them the slots still work.
    registerKey(KeySyms::digit(7), selectIdentifier);
    registerKey(KeySyms::digit(8), translateSelectionIdentifier);
    registerKey(KeySyms::digit(9), translateClipboardIdentifier);
    registerKey(KeySyms::digit(0), dictateTranslateIdentifier);
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

std::optional<int> HotkeyMonitor::identifierOf(uint32_t keysym) const {
    if (keysym == KeySyms::escape) {
        return cancelRef_ ? std::optional(cancelIdentifier) : std::nullopt;
    }
    for (const HotKey& key : hotKeyRefs_) {
        if (key.keysym == keysym) {
            return key.identifier;
        }
    }
    return std::nullopt;
}

void HotkeyMonitor::handle(const DesktopKeyboard::Event& event) {
    using Kind = DesktopKeyboard::Event::Kind;
    // A held hot key is one press and one release, whatever the keyboard repeats.
    if (!handlerInstalled_ || event.repeat) {
        return;
    }
    if (event.kind != Kind::keyDown && event.kind != Kind::keyUp) {
        return;
    }
    const auto identifier = identifierOf(event.keysym);
    if (!identifier) {
        return;
    }
    if (event.kind == Kind::keyDown) {
        pressed(*identifier, event.time);
    } else {
        released(*identifier, event.time);
    }
}

void HotkeyMonitor::pressed(int identifier, double at) {
    switch (identifier) {
        case cancelIdentifier:
            call(onCancel);
            break;
        case selectIdentifier:
            call(onSelectTool);
            break;
        case translateSelectionIdentifier:
            call(onTranslateSelection);
            break;
        case translateClipboardIdentifier:
            call(onTranslateClipboard);
            break;
        case dictateTranslateIdentifier:
            dictateTranslateDown(at);
            break;
        default:
            slotDown(identifier - 1, at);
            break;
    }
}

void HotkeyMonitor::released(int identifier, double at) {
    switch (identifier) {
        case cancelIdentifier:
        case selectIdentifier:
        case translateSelectionIdentifier:
        case translateClipboardIdentifier:
            break;
        case dictateTranslateIdentifier:
            dictateTranslateUp(at);
            break;
        default:
            slotUp(identifier - 1, at);
            break;
    }
}

void HotkeyMonitor::slotDown(int slot, double at) {
    if (capturing()) {
        // Any slot key ends a running capture; the releases of keys pressed
        // before then must not end the next one.
        pressedAt_.clear();
        call(onSlotFinish);
        return;
    }
    pressedAt_[slot] = at;
    if (onSlotStart) {
        onSlotStart(slot);
    }
}

void HotkeyMonitor::slotUp(int slot, double at) {
    const auto it = pressedAt_.find(slot);
    if (it == pressedAt_.end()) {
        return;
    }
    const double pressedAt = it->second;
    pressedAt_.erase(it);
    // A short press leaves the capture latched; the next slot key ends it.
    if (capturing() && at - pressedAt >= holdThreshold) {
        call(onSlotFinish);
    }
}

void HotkeyMonitor::dictateTranslateDown(double at) {
    if (capturing()) {
        translatePressedAt_.reset();
        call(onDictateTranslateFinish);
        return;
    }
    translatePressedAt_ = at;
    call(onDictateTranslateStart);
}

void HotkeyMonitor::dictateTranslateUp(double at) {
    if (!translatePressedAt_ || !capturing()) {
        return;
    }
    const double pressedAt = *translatePressedAt_;
    translatePressedAt_.reset();
    if (at - pressedAt >= holdThreshold) {
        call(onDictateTranslateFinish);
    }
}

}  // namespace tevra
