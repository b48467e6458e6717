#pragma once

#include <string>
#include <vector>

#include "store/history_row.h"
#include "ui/ui_state.h"

// The History page: the greeting, the three tiles and what a row shows.
namespace tevra::HistoryPage {

inline constexpr const char* subtitle =
    "Every dictation \u2014 what you said, and what Tevra typed.";
inline constexpr const char* emptyTitle = "Nothing yet \u2014 say the word.";
inline constexpr const char* showRaw = "raw transcript";
inline constexpr const char* hideRaw = "hide raw transcript";
inline constexpr const char* copyLabel = "Copy";
inline constexpr const char* copiedLabel = "Copied";
inline constexpr const char* commandBadge = "command";

// "Good morning, Ann"; "Welcome back" reads "Hello" here.
std::string greeting(const UIState& state);
// "Click into any text field, press Right Ctrl, speak, press Right Ctrl again."
std::string emptyHint(const WeftSettings& settings);

struct Tile {
    std::string value;
    std::string label;
};
// "dictations", "words typed", "avg processing".
std::vector<Tile> tiles(const UIState& state);

bool isCommand(const HistoryRow& row);
// "1 240 ms": speech and clean-up together.
std::string processing(const HistoryRow& row);
// "14:03 · Firefox", in the user's time zone.
std::string when(const HistoryRow& row);

}  // namespace tevra::HistoryPage
