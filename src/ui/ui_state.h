#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/notification_center.h"
#include "base/work_pool.h"
#include "capture/microphone_access.h"
#include "core/credentials.h"
#include "core/weft_settings.h"
#include "polish/mode.h"
#include "polish/replacement.h"
#include "store/history_row.h"
#include "ui/observers.h"

namespace tevra {

class HistoryStore;
class NotetakerController;
class WeftRuntime;

// A snippet as the Snippets page lists it; identified by its trigger.
struct SnippetItem {
    std::string trigger;
    std::string expansion;

    const std::string& id() const { return trigger; }
    bool operator==(const SnippetItem&) const = default;
};

// A tone as the App tones page lists it; identified by its kind and pattern.
struct ToneItem {
    std::string pattern;
    std::string tone;
    std::string matchKind;

    std::string id() const { return matchKind + '\x01' + pattern; }
    bool operator==(const ToneItem&) const = default;
};

// What the pages need besides the runtime, made by the program's composition
// root (or a test).
struct UIServices {
    MainQueue* queue = nullptr;
    // Where "weft.settingsChanged" is posted; none: nobody hears of a save.
    NotificationCenter* notifications = nullptr;
    // Keyring and sound-server calls, which block, run here; none: on the
    // main thread.
    std::shared_ptr<WorkPool> work;
    std::shared_ptr<MicrophoneAccess> microphone;
    // The settings that take effect at once: the windows' look and the chime.
    std::function<void(const std::string& appearance)> applyAppearance;
    std::function<void(bool on)> setChimeEnabled;
    // "Quit Tevra".
    std::function<void()> quit;
    // Seconds since the Unix epoch, for the greeting; the system clock when empty.
    std::function<double()> clock;
    // The user's full name; the password database's when empty.
    std::function<std::string()> fullUserName;
    // Where keys are looked up before the keyring; the process's when empty.
    Credentials::Environment environment;
};

// The model behind the main window, one per process, on the main thread.
// Lists are read from the store by reload(); each page's change writes to
// the store at once and reloads. The settings are the exception: the pages
// edit `settings`, a draft, until saveSettings() applies it. Without a store
// every list stays as it is and every write is skipped.
class UIState {
public:
    static constexpr int64_t historyLimit = 50;

    // Copies the runtime's settings and reloads. notetaker: none where there is no notetaker.
    UIState(WeftRuntime& runtime, std::shared_ptr<NotetakerController> notetaker,
            UIServices services);
    UIState(const UIState&) = delete;
    UIState& operator=(const UIState&) = delete;

    WeftRuntime& runtime;
    const std::shared_ptr<NotetakerController> notetaker;

    std::vector<HistoryRow> history;  // newest first
    std::vector<std::string> dictionary;
    std::vector<Replacement> replacements;
    std::vector<SnippetItem> snippets;
    std::vector<ToneItem> tones;
    std::vector<Mode> modes;
    WeftSettings settings;  // the draft the pages edit

    // Reads every list afresh, and the settings: unsaved edits are lost.
    void reload();
    // Applies `settings`: into the runtime, to settings.json, a reload of the
    // runtime's backends, and "weft.settingsChanged".
    void saveSettings();
    // Tells the rest of the program that what the keys do has changed.
    void postSettingsChanged();

    HistoryStore* store() const;
    const UIServices& services() const { return services_; }

    // The first word of the user's full name, or "there".
    std::string tevraFirstName() const;
    // "Good morning", "Good afternoon", "Good evening" or "Welcome back", by the local hour.
    std::string tevraSalutation() const;
    // Seconds since the Unix epoch.
    double now() const;

    // Called after every reload and change.
    [[nodiscard]] Observers::Token observe(std::function<void()> observer) {
        return observers_.add(std::move(observer));
    }
    void changed() { observers_.notify(); }

private:
    UIServices services_;
    Observers observers_;
};

// The greeting's parts, from what the system says.
std::string tevraFirstName(std::string_view fullName);
std::string tevraSalutation(int hour);

}  // namespace tevra
