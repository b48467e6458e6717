#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "capture/global_shortcuts.h"
#include "capture/hotkey_actions.h"
#include "capture/hotkey_backend.h"

namespace tevra {

// The keys as shortcuts of the desktop (Wayland's Global Shortcuts portal):
// one for each voice (the first one is the talk key), the select tool, the
// translations, the clipboard queue and cancelling, with the Alt keys as the
// suggested triggers. Presses and releases follow the Alt keys' rules, so
// holding to talk and tapping to latch work alike.
//
// Lives in a std::shared_ptr: the desktop's events hold it weakly. Runs on
// the main thread.
class ShortcutHotkeys : public HotkeyBackend, public std::enable_shared_from_this<ShortcutHotkeys> {
public:
    // Activations of a held shortcut closer than this are the desktop's repeats.
    static constexpr double repeatGap = 1.0;
    // How long after a shortcut's release its modifiers count as still held:
    // the desktop tells of the shortcut, not of the Alt the user lets go a
    // moment later.
    static constexpr double releaseSettle = 0.15;

    // voiceNames: the enabled voices in slot order (at most six are given keys).
    ShortcutHotkeys(MainQueue& queue, std::unique_ptr<GlobalShortcuts> shortcuts,
                    std::vector<std::string> voiceNames, LogLine log = {});
    ~ShortcutHotkeys() override;

    // The shortcuts registered for these voices, in the order given.
    static std::vector<GlobalShortcuts::Shortcut> shortcutsFor(
        const std::vector<std::string>& voiceNames);

    // "global shortcuts portal"; whether the desktop agrees is known later.
    std::optional<std::string> start() override;
    void stop() override;
    // The cancel shortcut acts only while a capture runs.
    void enableCancelKey() override { cancelEnabled_ = true; }
    void disableCancelKey() override { cancelEnabled_ = false; }

    // Whether the user may still hold a shortcut's keys, so that a chord
    // sent now would become another one (the paste's KeyInjector asks).
    bool keysHeld() const;

private:
    void activated(const std::string& id, double at);
    void deactivated(const std::string& id, double at);

    MainQueue& queue_;
    std::unique_ptr<GlobalShortcuts> shortcuts_;
    std::vector<std::string> voiceNames_;
    LogLine log_;
    HotkeyPresses presses_{*this};
    std::map<std::string, HotkeyAction> actions_;
    // The shortcuts held, with when each was last activated.
    std::map<std::string, double> down_;
    std::optional<double> lastRelease_;  // on the queue's clock
    bool cancelEnabled_ = false;
    bool started_ = false;
};

}  // namespace tevra
