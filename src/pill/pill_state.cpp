#include "pill/pill_state.h"

#include "capture/fn_hotkey_map.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"

namespace tevra {

PillState::PillState(WeftRuntime& runtime, NotificationCenter* notifications)
    : runtime_(runtime),
      notifications_(notifications),
      history_(recentRows()),
      language_(runtime.settings().languageHint) {
    if (notifications_) {
        settingsObserver_ = notifications_->observe(weftSettingsChanged, [this] {
            language_ = runtime_.settings().languageHint;
            changed();
        });
    }
}

std::vector<HistoryRow> PillState::recentRows() const {
    const auto& store = runtime_.store();
    return store ? store->recent(historyLimit) : std::vector<HistoryRow>{};
}

void PillState::changed() {
    if (onChange) {
        onChange();
    }
}

void PillState::setPhase(Phase phase) {
    if (phase == phase_) {
        return;
    }
    phase_ = phase;
    if (phase == Phase::full) {
        history_ = recentRows();  // the card is always fresh
    }
    if (onPhaseChange) {
        onPhaseChange();
    }
    changed();
}

void PillState::setDock(PillDock dock) {
    dock_ = dock;
    changed();
}

void PillState::setMeterMode(PillMeterMode mode) {
    meterMode_ = mode;
    changed();
}

void PillState::setLevel(double level) {
    level_ = level;
}

void PillState::setPastingRow(std::optional<int64_t> id) {
    pastingRow_ = id;
    changed();
}

void PillState::reload() {
    history_ = recentRows();
    changed();
}

std::string PillState::languageLabel() const {
    for (const Language& language : languages) {
        if (language.code == language_) {
            return std::string(language.label);
        }
    }
    return "Auto";
}

std::vector<PillState::KeyMapping> PillState::mappings() const {
    std::vector<KeyMapping> rows;
    if (const auto& store = runtime_.store()) {
        for (const Mode& mode : store->modes()) {  // by slot
            if (mode.enabled) {
                rows.push_back({hotkeyLabel(mode), mode.name});
            }
        }
    }
    rows.push_back({"Fn 6", "Select text"});
    return rows;
}

void PillState::setLanguage(const std::string& code) {
    language_ = code;
    WeftSettings settings = runtime_.settings();
    settings.languageHint = code;
    settings.save(runtime_.dataDir());
    runtime_.reload();
    if (notifications_) {
        notifications_->post(weftSettingsChanged);
    }
    changed();
}

}  // namespace tevra
