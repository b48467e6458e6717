#include "ui/history_page.h"

#include "base/date_format.h"
#include "pill/pill_texts.h"
#include "store/history_store.h"
#include "store/insights_format.h"

namespace tevra::HistoryPage {

std::string greeting(const UIState& state) {
    std::string salutation = state.tevraSalutation();
    if (salutation == "Welcome back") {
        salutation = "Hello";
    }
    return salutation + ", " + state.tevraFirstName();
}

std::string emptyHint(const WeftSettings& settings) {
    const std::string key =
        settings.hotkey == "fn" ? PillTexts::talkKeyName(settings.talkKey) : "Alt+1";
    return "Click into any text field, press " + key + ", speak, press " + key + " again.";
}

std::vector<Tile> tiles(const UIState& state) {
    HistoryStats stats;
    if (const HistoryStore* store = state.store()) {
        stats = store->stats();
    }
    return {{InsightsFormat::grouped(stats.dictations), "dictations"},
            {InsightsFormat::grouped(stats.words), "words typed"},
            {InsightsFormat::grouped(stats.avgLatencyMs) + " ms", "avg processing"}};
}

bool isCommand(const HistoryRow& row) {
    return row.polishBackend.starts_with("instruct");
}

std::string processing(const HistoryRow& row) {
    return InsightsFormat::grouped(row.sttMs + row.polishMs) + " ms";
}

std::string when(const HistoryRow& row) {
    const std::string time = DateFormat::format(row.ts, "d MMM, HH:mm", "en_GB");
    return row.app.empty() ? time : time + " \u00b7 " + row.app;
}

}  // namespace tevra::HistoryPage
