#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/notification_center.h"
#include "pill/pill_meter_mode.h"
#include "pill/pill_phase.h"
#include "store/history_row.h"

namespace tevra {

class WeftRuntime;

// The model behind one pill: its phase, its edge, what its meter shows, and
// the data of its cards. It draws nothing and owns no window: its controller
// reacts to onPhaseChange, and the view redraws on onChange. Main thread only.
class PillState {
public:
    using Phase = PillPhase;

    struct Language {
        std::string_view code;
        std::string_view label;
    };
    // The languages the card offers; "" lets the speech service detect it.
    static constexpr std::array<Language, 5> languages{{
        {"", "Auto"},
        {"pl", "PL"},
        {"en", "EN"},
        {"zh", "\u4e2d"},
        {"vi", "VI"},
    }};
    // The history card holds this many of the newest dictations.
    static constexpr int64_t historyLimit = 12;

    struct KeyMapping {
        std::string key;  // "Fn", "Fn 3"
        std::string name;
        friend bool operator==(const KeyMapping&, const KeyMapping&) = default;
    };

    // Reads the language from the settings and the newest dictations from the
    // store, and reads the language again whenever the settings change.
    // notifications may be null where nothing posts them.
    PillState(WeftRuntime& runtime, NotificationCenter* notifications);
    PillState(const PillState&) = delete;
    PillState& operator=(const PillState&) = delete;

    WeftRuntime& runtime() const { return runtime_; }

    Phase phase() const { return phase_; }
    // A new phase reads the history afresh on the way to the full card, then
    // tells onPhaseChange; the same phase again does nothing.
    void setPhase(Phase phase);
    PillDock dock() const { return dock_; }
    void setDock(PillDock dock);
    PillMeterMode meterMode() const { return meterMode_; }
    void setMeterMode(PillMeterMode mode);
    // The last microphone level, 0...1.
    double level() const { return level_; }
    void setLevel(double level);
    const std::vector<HistoryRow>& history() const { return history_; }
    // The language code of dictation, from the settings.
    const std::string& language() const { return language_; }
    // The history row that a click is pasting, until it is pasted.
    std::optional<int64_t> pastingRow() const { return pastingRow_; }
    void setPastingRow(std::optional<int64_t> id);

    // "Auto" for a code the table does not know.
    std::string languageLabel() const;
    // The card's key legend: each enabled voice by slot, then the select tool.
    std::vector<KeyMapping> mappings() const;

    void openFull() { setPhase(Phase::full); }
    void collapse() { setPhase(Phase::idle); }
    // The newest dictations again, after one was added.
    void reload();
    // Dictation in that language from now on: the settings are saved, the
    // runtime reloads, and "weft.settingsChanged" tells everyone else.
    void setLanguage(const std::string& code);

    std::function<void()> onPhaseChange;
    std::function<void(const std::string& text)> onPaste;
    // Every drag event; true on the first of a drag.
    std::function<void(bool first)> onDrag;
    std::function<void()> onMoveEnd;
    // Any of the fields above changed: the view redraws.
    std::function<void()> onChange;

private:
    void changed();
    std::vector<HistoryRow> recentRows() const;

    WeftRuntime& runtime_;
    NotificationCenter* notifications_;
    Phase phase_ = Phase::idle;
    PillDock dock_ = PillDock::bottom;
    PillMeterMode meterMode_ = PillMeterMode::recording;
    double level_ = 0;
    std::vector<HistoryRow> history_;
    std::string language_;
    std::optional<int64_t> pastingRow_;
    NotificationObserver settingsObserver_;
};

}  // namespace tevra
