// The main window's models against a real store in a temp dir, on virtual time.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"
#include "support/temp_dir.h"
#include "ui/insights_page.h"
#include "ui/list_pages.h"
#include "ui/modes_page.h"
#include "ui/settings_page.h"
#include "ui/tevra_section.h"
#include "ui/ui_state.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;

struct Window {
    explicit Window(const fs::path& dir) : runtime(dir, false, nullptr) {}
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    WeftRuntime runtime;
    UIServices services() {
        UIServices made;
        made.queue = &queue;
        made.notifications = &notifications;
        made.fullUserName = [] { return std::string(" \tAnn  Marie\nSmith "); };
        return made;
    }
    UIState state{runtime, nullptr, services()};
};

std::vector<ToneItem> zulipTones(const UIState& state) {
    std::vector<ToneItem> found;
    std::ranges::copy_if(state.tones, std::back_inserter(found),
                         [](const ToneItem& tone) { return tone.pattern == "zulip"; });
    return found;
}

struct PageCase {
    const char* name;
    std::function<void(UIState&)> act;
    std::function<void(const UIState&)> expect;
};

// Every page's rule, each applied to a fresh store, and again where the store is missing.
const PageCase kPageCases[] = {
    {"a phrase of blanks adds nothing and keeps the input",
     [](UIState& state) {
         DictionaryPage page{" \t "};
         EXPECT_FALSE(page.add(state));
         EXPECT_EQ(page.input, " \t ");
         page.input = "  Kestrum Cloud ";
         EXPECT_TRUE(page.add(state));
         EXPECT_EQ(page.input, "");
     },
     [](const UIState& state) {
         EXPECT_EQ(std::ranges::count(state.dictionary, "Kestrum Cloud"), 1);
         EXPECT_EQ(std::ranges::count(state.dictionary, " \t "), 0);
     }},
    {"an empty right side is allowed and nothing is trimmed",
     [](UIState& state) {
         ReplacementsPage page{" um", "", true};
         EXPECT_TRUE(page.add(state));
         EXPECT_EQ(page.from + page.to, "");
         EXPECT_FALSE(page.isRegex);
         ReplacementsPage leftless{"", "x"};
         EXPECT_FALSE(leftless.add(state));
     },
     [](const UIState& state) {
         ASSERT_EQ(state.replacements.size(), 1u);
         EXPECT_EQ(state.replacements[0].from, " um");
         EXPECT_EQ(state.replacements[0].to, "");
         EXPECT_TRUE(state.replacements[0].isRegex);
     }},
    {"a snippet needs both sides and is trimmed; removing goes by trigger",
     [](UIState& state) {
         SnippetsPage page{"my address", "  "};
         EXPECT_FALSE(page.add(state));
         page = {" my address ", " 1 Main St "};
         EXPECT_TRUE(page.add(state));
         page = {"sig", "Ann"};
         page.add(state);
         page.remove(state, {"sig", "?"});
     },
     [](const UIState& state) {
         EXPECT_EQ(std::ranges::count(state.snippets, SnippetItem{"my address", "1 Main St"}), 1);
         EXPECT_TRUE(std::ranges::none_of(
             state.snippets, [](const SnippetItem& snippet) { return snippet.trigger == "sig"; }));
     }},
    {"a tone added twice with different kinds goes with one delete of either",
     [](UIState& state) {
         TonesPage page;
         page.pattern = " zulip ";
         EXPECT_TRUE(page.add(state));
         EXPECT_EQ(page.pattern, "");
         page.kind = "title";
         page.tone = "formal";
         page.pattern = "zulip";
         page.add(state);
         EXPECT_EQ(page.kind + page.tone, "titleformal");  // the selectors stay
         // The store keeps one row per pattern: the later kind wins.
         const auto zulip = zulipTones(state);
         ASSERT_EQ(zulip.size(), 1u);
         EXPECT_EQ(zulip[0].id(), "title\x01zulip");
         page.remove(state, {"zulip", "casual", "app"});
     },
     [](const UIState& state) { EXPECT_TRUE(zulipTones(state).empty()); }},
    {"a mode switched off, a formal voice added and removed, then the defaults",
     [](UIState& state) {
         Mode first = state.modes.at(1);
         ModesPage::setEnabled(state, first, false);
         EXPECT_FALSE(state.modes.at(1).enabled);
         EXPECT_FALSE(ModesPage::isRemovable(state.modes.at(1)));
         ModesPage::addFormalLanguage(state, "de");
         ASSERT_TRUE(ModesPage::isRemovable(state.modes.back()));
         ModesPage::remove(state, state.modes.back().slot);
         ModesPage::resetToDefaults(state);
     },
     [](const UIState& state) {
         for (const Mode& mode : state.modes) {
             EXPECT_TRUE(mode.enabled) << mode.name;
             EXPECT_FALSE(ModesPage::isRemovable(mode)) << mode.name;
         }
     }},
};

class PageRules : public ::testing::TestWithParam<PageCase> {};

TEST_P(PageRules, ReachTheStore) {
    testing::TempDir dir;
    {
        Window window(dir.path());
        int postedChanges = 0;
        auto heard = window.notifications.observe(weftSettingsChanged, [&] { ++postedChanges; });
        GetParam().act(window.state);
        window.state.reload();
        GetParam().expect(window.state);
        window.queue.runPending();
        // Only the Modes page tells the program that the keys may have changed.
        EXPECT_EQ(postedChanges > 0, std::string(GetParam().name).starts_with("a mode"));
    }
}

INSTANTIATE_TEST_SUITE_P(Pages, PageRules, ::testing::ValuesIn(kPageCases),
                         [](const auto& param) { return "case" + std::to_string(param.index); });

TEST(UIState, WithoutAStoreEveryListStaysAndNoPageFails) {
    // A directory where the database belongs: no store.
    testing::TempDir broken;
    fs::create_directories(broken / "weft.sqlite/inside");
    Window window(broken.path());
    UIState& state = window.state;
    ASSERT_EQ(state.store(), nullptr);
    DictionaryPage dictionary{"Kestrum"};
    EXPECT_TRUE(dictionary.add(state));
    dictionary.remove(state, "Kestrum");
    ReplacementsPage replacements{"a", "b"};
    replacements.add(state);
    SnippetsPage snippets{"a", "b"};
    snippets.add(state);
    TonesPage tones;
    tones.pattern = "a";
    tones.add(state);
    ModesPage::addFormalLanguage(state, "de");
    ModesPage::resetToDefaults(state);
    EXPECT_TRUE(state.dictionary.empty() && state.replacements.empty() && state.snippets.empty() &&
                state.tones.empty() && state.modes.empty());
}

TEST(UIState, UnsavedSettingsAreLostOnReloadAndSavedOnesReachTheFileAndTheProgram) {
    testing::TempDir dir;
    Window window(dir.path());
    int posted = 0;
    auto heard = window.notifications.observe(weftSettingsChanged, [&] { ++posted; });
    window.state.settings.languageHint = "pl";
    window.state.reload();
    EXPECT_EQ(window.state.settings.languageHint, "");

    window.state.settings.languageHint = "pl";
    window.state.saveSettings();
    window.queue.runPending();
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(WeftSettings::load(dir.path()).languageHint, "pl");
    EXPECT_EQ(window.runtime.settings().languageHint, "pl");

    // The controls that apply at once save at once too.
    SettingsPage::setTheme(window.state, "dark");
    EXPECT_EQ(WeftSettings::load(dir.path()).appearance, "dark");
}

TEST(UIState, GreetingByTheHourAndTheFirstName) {
    const std::pair<int, const char*> hours[] = {
        {4, "Welcome back"},    {5, "Good morning"},    {11, "Good morning"},
        {12, "Good afternoon"}, {16, "Good afternoon"}, {17, "Good evening"},
        {21, "Good evening"},   {22, "Welcome back"},   {0, "Welcome back"}};
    for (const auto& [hour, text] : hours) {
        EXPECT_EQ(tevraSalutation(hour), text) << hour;
    }
    EXPECT_EQ(tevraFirstName(" \n\t "), "there");
    EXPECT_EQ(tevraFirstName(""), "there");
    testing::TempDir dir;
    Window window(dir.path());
    EXPECT_EQ(window.state.tevraFirstName(), "Ann");
    EXPECT_EQ(TevraSections::title(TevraSections::all.back()), "Settings");
    EXPECT_EQ(TevraSections::fromRawValue("App tones"), TevraSection::tones);
}

TEST(ModesPage, TheSignatureHostIsTheFirstMailVoiceElseTheLowestSigningSlot) {
    const auto mode = [](int64_t slot, const char* name, const char* signature) {
        return Mode{.slot = slot, .name = name, .signature = signature};
    };
    const struct {
        std::vector<Mode> modes;
        std::optional<int64_t> host;
    } cases[] = {
        {{mode(1, "Plain", ""), mode(2, "Notes", "")}, std::nullopt},
        {{mode(3, "Formal", "yes"), mode(2, "Letter", "yes")}, 2},
        {{mode(1, "Formal", "yes"), mode(4, "EMAIL reply", "yes"), mode(5, "Mail", "yes")}, 4},
        {{mode(1, "Formal", "yes"), mode(4, "Email", "")}, 1},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ModesPage::signatureHostSlot(c.modes), c.host);
    }
}

}  // namespace
}  // namespace tevra

namespace tevra {
namespace {

TEST(InsightsPage, TheHeatMapStartsOnSundayAndShadesByTheBusiestDay) {
    EXPECT_EQ(InsightsPage::weekday("2026-11-22"), 0);  // a Sunday
    EXPECT_EQ(InsightsPage::weekday("2024-02-29"), 4);
    EXPECT_EQ(InsightsPage::weekday("2026-13-01"), -1);
    InsightsPage page;
    // Wednesday 2026-11-04 to Wednesday 2026-11-18: padding of three, then 15 days.
    for (int date = 4; date <= 18; ++date) {
        page.activity.push_back(
            {"2026-11-" + std::string(date < 10 ? "0" : "") + std::to_string(date),
             date == 18 ? 8 : date % 3});
    }
    const auto columns = page.weekColumns();
    ASSERT_EQ(columns.size(), 3u);
    EXPECT_FALSE(columns[0][2].has_value());
    EXPECT_EQ(columns[0][3]->day, "2026-11-04");
    EXPECT_EQ(columns[2].size(), 4u);
    EXPECT_EQ(page.maxCount(), 8);
    const std::pair<int64_t, double> shades[] = {{0, 0.06}, {1, 0.32}, {2, 0.52},
                                                 {5, 0.74}, {6, 1.0},  {8, 1.0}};
    for (const auto& [count, opacity] : shades) {
        EXPECT_EQ(InsightsPage::shade(count, 8).opacity, opacity) << count;
        EXPECT_EQ(InsightsPage::shade(count, 8).accent, count > 0);
    }
    EXPECT_EQ(page.sparklineCaption(), "Last 15 days");
    EXPECT_EQ(InsightsPage::read(nullptr).isEmpty(), true);
}

}  // namespace
}  // namespace tevra
