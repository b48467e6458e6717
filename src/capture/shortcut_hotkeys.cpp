#include "capture/shortcut_hotkeys.h"

#include <algorithm>
#include <utility>

namespace tevra {
namespace {

using Kind = HotkeyAction::Kind;

constexpr std::size_t kMostVoices = 6;

struct Entry {
    GlobalShortcuts::Shortcut shortcut;
    HotkeyAction action;
};

// The Alt keys are suggested where the Alt scheme has them; the queue and
// cancelling get none, since every key left would shadow an application's
// own (Esc above all, which a desktop shortcut would take for good).
std::vector<Entry> entriesFor(const std::vector<std::string>& voiceNames) {
    std::vector<Entry> entries;
    const std::size_t voices = std::clamp<std::size_t>(voiceNames.size(), 1, kMostVoices);
    for (std::size_t i = 0; i < voices; ++i) {
        const std::string name = i < voiceNames.size() ? voiceNames[i] : "plain dictation";
        const std::string digit = std::to_string(i + 1);
        entries.push_back({{i == 0 ? "talk" : "voice-" + digit,
                            i == 0 ? "Talk key: dictate (" + name + ")"
                                   : "Dictate with voice " + std::to_string(i) + " (" + name + ")",
                            "ALT+" + digit},
                           {Kind::slot, static_cast<int>(i)}});
    }
    entries.push_back({{"select-text", "Select text on the screen", "ALT+7"}, {Kind::select}});
    entries.push_back({{"translate-selection", "Translate the selected text", "ALT+8"},
                       {Kind::translateSelection}});
    entries.push_back(
        {{"translate-clipboard", "Translate the clipboard, pasted at the cursor", "ALT+9"},
         {Kind::translateClipboard}});
    entries.push_back(
        {{"dictate-translate", "Dictate and translate", "ALT+0"}, {Kind::dictateTranslate}});
    entries.push_back(
        {{"queue-add", "Add the copied text to the clipboard queue", ""}, {Kind::clipStack}});
    entries.push_back({{"queue-paste", "Paste the clipboard queue", ""}, {Kind::clipPaste}});
    entries.push_back(
        {{"queue-mode", "Switch the clipboard queue's paste mode", ""}, {Kind::clipMode}});
    entries.push_back({{"cancel", "Cancel the recording under way", ""}, {Kind::cancel}});
    return entries;
}

}  // namespace

ShortcutHotkeys::ShortcutHotkeys(MainQueue& queue, std::unique_ptr<GlobalShortcuts> shortcuts,
                                 std::vector<std::string> voiceNames, LogLine log)
    : queue_(queue),
      shortcuts_(std::move(shortcuts)),
      voiceNames_(std::move(voiceNames)),
      log_(std::move(log)) {}

ShortcutHotkeys::~ShortcutHotkeys() {
    stop();
}

std::vector<GlobalShortcuts::Shortcut> ShortcutHotkeys::shortcutsFor(
    const std::vector<std::string>& voiceNames) {
    std::vector<GlobalShortcuts::Shortcut> shortcuts;
    for (const Entry& entry : entriesFor(voiceNames)) {
        shortcuts.push_back(entry.shortcut);
    }
    return shortcuts;
}

std::optional<std::string> ShortcutHotkeys::start() {
    std::vector<GlobalShortcuts::Shortcut> shortcuts;
    for (const Entry& entry : entriesFor(voiceNames_)) {
        actions_[entry.shortcut.id] = entry.action;
        shortcuts.push_back(entry.shortcut);
    }
    std::weak_ptr<ShortcutHotkeys> weak = weak_from_this();
    GlobalShortcuts::Handlers handlers;
    handlers.activated = [weak](const std::string& id, double at) {
        if (auto self = weak.lock()) {
            self->activated(id, at);
        }
    };
    handlers.deactivated = [weak](const std::string& id, double at) {
        if (auto self = weak.lock()) {
            self->deactivated(id, at);
        }
    };
    handlers.failed = [weak](const std::string& reason) {
        if (auto self = weak.lock(); self && self->log_) {
            self->log_("global shortcuts portal: " + reason +
                       " \u2014 bind `tevractl record toggle` to a shortcut of the desktop "
                       "instead");
        }
    };
    shortcuts_->bind(shortcuts, std::move(handlers));
    started_ = true;
    return "global shortcuts portal";
}

void ShortcutHotkeys::stop() {
    if (started_) {
        shortcuts_->close();
        started_ = false;
    }
    down_.clear();
}

bool ShortcutHotkeys::keysHeld() const {
    return !down_.empty() || (lastRelease_ && queue_.now() - *lastRelease_ < releaseSettle);
}

void ShortcutHotkeys::activated(const std::string& id, double at) {
    const auto it = actions_.find(id);
    if (!started_ || it == actions_.end()) {
        return;
    }
    if (const auto held = down_.find(id); held != down_.end()) {
        // Desktops repeat the activation of a held shortcut. A desktop that
        // never tells of releases would leave the key down for good: an
        // activation long after the last one is a new press.
        const double last = std::exchange(held->second, at);
        if (at - last < repeatGap) {
            return;
        }
        presses_.released(it->second, last);
    } else {
        down_[id] = at;
    }
    if (it->second.kind == Kind::cancel && !cancelEnabled_) {
        return;
    }
    presses_.pressed(it->second, at);
}

void ShortcutHotkeys::deactivated(const std::string& id, double at) {
    const auto it = actions_.find(id);
    if (!started_ || it == actions_.end() || down_.erase(id) == 0) {
        return;
    }
    lastRelease_ = queue_.now();
    presses_.released(it->second, at);
}

}  // namespace tevra
