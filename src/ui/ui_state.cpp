#include "ui/ui_state.h"

#include <charconv>

#include "base/date_format.h"
#include "base/text.h"
#include "base/user_name.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"

namespace tevra {

UIState::UIState(WeftRuntime& weftRuntime, std::shared_ptr<NotetakerController> notes,
                 UIServices services)
    : runtime(weftRuntime),
      notetaker(std::move(notes)),
      settings(weftRuntime.settings()),
      services_(std::move(services)) {
    reload();
}

HistoryStore* UIState::store() const {
    return runtime.store().get();
}

void UIState::reload() {
    HistoryStore* db = store();
    if (!db) {
        return;  // the lists stay as they were
    }
    history = db->recent(historyLimit);
    dictionary = db->dictionary();
    replacements = db->replacements();
    snippets.clear();
    for (const Snippet& snippet : db->snippets()) {
        snippets.push_back({snippet.trigger, snippet.expansion});
    }
    tones.clear();
    for (const ToneProfile& profile : db->toneProfiles()) {
        tones.push_back({profile.pattern, profile.tone, profile.matchKind});
    }
    modes = db->modes();
    settings = runtime.settings();
    changed();
}

void UIState::saveSettings() {
    settings.save(runtime.dataDir());
    runtime.reload();  // reads them back and rebuilds the backends
    postSettingsChanged();
    changed();
}

void UIState::postSettingsChanged() {
    if (services_.notifications) {
        services_.notifications->post(weftSettingsChanged);
    }
}

double UIState::now() const {
    return services_.clock ? services_.clock() : HistoryRow::currentTimestamp();
}

std::string UIState::tevraFirstName() const {
    return tevra::tevraFirstName(services_.fullUserName ? services_.fullUserName()
                                                        : UserName::full());
}

std::string UIState::tevraSalutation() const {
    const std::string hour = DateFormat::format(now(), "H", "en_US_POSIX");
    int value = 0;
    std::from_chars(hour.data(), hour.data() + hour.size(), value);
    return tevra::tevraSalutation(value);
}

std::string tevraFirstName(std::string_view fullName) {
    // Split at white space of any kind: the first piece is the first name.
    static const auto rest = text::Regex::compile("\\s[\\s\\S]*$");
    const std::string first = rest->replaceAll(text::trim(fullName), "");
    return first.empty() ? "there" : first;
}

std::string tevraSalutation(int hour) {
    if (hour >= 5 && hour <= 11) {
        return "Good morning";
    }
    if (hour >= 12 && hour <= 16) {
        return "Good afternoon";
    }
    if (hour >= 17 && hour <= 21) {
        return "Good evening";
    }
    return "Welcome back";
}

}  // namespace tevra
