#include "pill/pill_state.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "pill/pill_texts.h"
#include "store/history_store.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using Phase = PillPhase;

class PillStateTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    testing::TempDir data;
    std::unique_ptr<WeftRuntime> runtime =
        std::make_unique<WeftRuntime>(data.path(), false, nullptr);
};

TEST_F(PillStateTest, APhaseChangeIsToldOnceAndTheHistoryCardIsAlwaysFresh) {
    PillState state(*runtime, &notifications);
    int told = 0;
    state.onPhaseChange = [&] { ++told; };
    HistoryRow row;
    row.polished = "newer than the card";
    runtime->store()->add(row);

    const std::vector<std::pair<Phase, int>> steps = {
        {Phase::idle, 0},      {Phase::peek, 1}, {Phase::peek, 1},
        {Phase::recording, 2}, {Phase::idle, 3},
    };
    for (const auto& [phase, expected] : steps) {
        state.setPhase(phase);
        EXPECT_EQ(told, expected) << rawValue(phase);
    }
    EXPECT_TRUE(state.history().empty()) << "read at the start only";
    state.openFull();
    ASSERT_EQ(state.history().size(), 1u);
    EXPECT_EQ(state.history()[0].polished, row.polished);
    state.collapse();
    EXPECT_EQ(state.phase(), Phase::idle);
}

TEST_F(PillStateTest, TheLanguageIsChosenOnTheCardAndEveryPillHearsOfIt) {
    const std::vector<std::pair<std::string, std::string>> labels = {
        {"", "Auto"}, {"pl", "PL"}, {"en", "EN"}, {"zh", "\u4e2d"}, {"vi", "VI"}, {"xx", "Auto"},
    };
    for (const auto& [code, label] : labels) {
        std::ofstream(data / "settings.json") << "{\"languageHint\": \"" << code << "\"}";
        runtime->reload();
        EXPECT_EQ(PillState(*runtime, nullptr).languageLabel(), label) << code;
    }

    PillState chooser(*runtime, &notifications);
    PillState other(*runtime, &notifications);
    chooser.setLanguage("vi");
    EXPECT_EQ(chooser.language(), "vi");
    EXPECT_EQ(runtime->settings().languageHint, "vi") << "the runtime reloaded";
    EXPECT_EQ(WeftSettings::load(data.path()).languageHint, "vi") << "saved";
    EXPECT_EQ(other.language(), "xx");
    queue.runPending();
    EXPECT_EQ(other.languageLabel(), "VI");
}

TEST_F(PillStateTest, TheKeyLegendListsTheEnabledVoicesThenTheSelectTool) {
    std::vector<Mode> modes = runtime->store()->modes();
    for (Mode& mode : modes) {
        mode.enabled = mode.slot <= 2;
        runtime->store()->saveMode(mode);
    }
    const auto mappings = PillState(*runtime, nullptr).mappings();
    const std::vector<PillState::KeyMapping> expected = {
        {"Fn", "Dictate"}, {"Fn 1", "Command"}, {"Fn 2", "Email"}, {"Fn 6", "Select text"}};
    EXPECT_EQ(mappings, expected);

    // As the desktop's keys say it.
    WeftSettings settings;
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> keys = {
        {"fn", "Control_R", "Fn", "Right Ctrl"},    {"fn", "Control_R", "Fn 6", "Right Ctrl+6"},
        {"fn", "Super_R", "Fn 2", "Right Super+2"}, {"fn", "F13", "Fn", "F13"},
        {"option", "Control_R", "Fn", "Alt+1"},     {"option", "Control_R", "Fn 9", "Alt+0"},
    };
    for (const auto& [scheme, talkKey, label, shown] : keys) {
        settings.hotkey = scheme;
        settings.talkKey = talkKey;
        EXPECT_EQ(PillTexts::keyLabel(label, settings), shown) << scheme << " " << label;
    }
    EXPECT_EQ(PillTexts::emptyHistory(settings), "Nothing yet \u2014 hold Alt+1 and speak.");
}

TEST_F(PillStateTest, WithoutAStoreTheCardsAreEmptyAndNothingFails) {
    runtime.reset();
    std::filesystem::remove_all(data / "weft.sqlite");
    std::filesystem::create_directories(data / "weft.sqlite");  // cannot be opened
    runtime = std::make_unique<WeftRuntime>(data.path(), false, nullptr);
    ASSERT_EQ(runtime->store(), nullptr);
    PillState state(*runtime, nullptr);
    state.openFull();
    state.reload();
    EXPECT_TRUE(state.history().empty());
    EXPECT_EQ(state.mappings(), (std::vector<PillState::KeyMapping>{{"Fn 6", "Select text"}}));
}

}  // namespace
}  // namespace tevra
