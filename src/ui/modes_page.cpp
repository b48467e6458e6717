#include "ui/modes_page.h"

#include "base/text.h"
#include "capture/fn_hotkey_map.h"
#include "pill/pill_texts.h"
#include "polish/mode_defaults.h"
#include "store/history_store.h"

namespace tevra::ModesPage {
namespace {

void changedKeys(UIState& state) {
    state.reload();
    state.postSettingsChanged();
}

}  // namespace

std::string switchHelp(bool enabled) {
    return enabled ? "On \u2014 this key is active" : "Off \u2014 this key does nothing";
}

std::optional<std::string> keyLabel(const Mode& mode, const WeftSettings& settings) {
    // Slot 0 is the talk key alone; the number keys after the voices' own
    // belong to the side actions.
    if (mode.slot != 0 && !FnHotkeyMap::keyCode(static_cast<int>(mode.slot))) {
        return std::nullopt;
    }
    return PillTexts::keyLabel(hotkeyLabel(mode), settings);
}

bool isRemovable(const Mode& mode) {
    return mode.slot >= static_cast<int64_t>(ModeDefaults::seed().size());
}

std::optional<int64_t> signatureHostSlot(const std::vector<Mode>& modes) {
    std::optional<int64_t> lowest;
    for (const Mode& mode : modes) {
        if (mode.signature.empty()) {
            continue;
        }
        // "mail" covers "email" too.
        if (text::lowercase(mode.name).find("mail") != std::string::npos) {
            return mode.slot;
        }
        if (!lowest || mode.slot < *lowest) {
            lowest = mode.slot;
        }
    }
    return lowest;
}

void setEnabled(UIState& state, Mode mode, bool enabled) {
    mode.enabled = enabled;
    if (HistoryStore* store = state.store()) {
        store->saveMode(mode);
    }
    changedKeys(state);
}

void remove(UIState& state, int64_t slot) {
    if (HistoryStore* store = state.store()) {
        store->deleteMode(slot);
    }
    changedKeys(state);
}

void addFormalLanguage(UIState& state, const std::string& languageCode) {
    if (HistoryStore* store = state.store()) {
        store->addFormalLanguageMode(languageCode);
    }
    changedKeys(state);
}

void resetToDefaults(UIState& state) {
    if (HistoryStore* store = state.store()) {
        store->resetModesToDefaults();
    }
    changedKeys(state);
}

}  // namespace tevra::ModesPage
