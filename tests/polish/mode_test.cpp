#include "polish/mode.h"

#include <gtest/gtest.h>

#include "polish/mode_defaults.h"
#include "polish/voice.h"

namespace tevra {
namespace {

TEST(ModeDefaults, SeedsSixEnabledVoicesInSlotOrder) {
    struct Row {
        std::int64_t slot;
        std::string name;
        std::string outputLanguage;
        std::string signature;
        bool isScreenshot;
        bool isCommand;
    };
    const std::vector<Row> expected = {
        {0, "Dictate", "", "", false, false},
        {1, "Command", "", "", false, true},
        {2, "Email", "", "signs-off", false, false},
        {3, "Formal message — 中文", "zh", "signs-off", false, false},
        {4, "Formal message", "", "signs-off", false, false},
        {5, "Screenshot → text", "", "", true, false},
    };
    const auto seed = ModeDefaults::seed();
    ASSERT_EQ(seed.size(), expected.size());
    for (std::size_t i = 0; i < seed.size(); ++i) {
        SCOPED_TRACE(seed[i].name);
        EXPECT_EQ(seed[i].slot, expected[i].slot);
        EXPECT_EQ(seed[i].name, expected[i].name);
        EXPECT_EQ(seed[i].outputLanguage, expected[i].outputLanguage);
        EXPECT_EQ(seed[i].signature, expected[i].signature);
        EXPECT_EQ(seed[i].isScreenshot, expected[i].isScreenshot);
        EXPECT_EQ(seed[i].isCommand, expected[i].isCommand);
        EXPECT_TRUE(seed[i].enabled);
        EXPECT_FALSE(seed[i].instructions.empty());
    }
    EXPECT_EQ(seed[4].instructions, ModeDefaults::formalInstructions);
    EXPECT_EQ(Voice::signOffMarker, "signs-off");
}

TEST(Mode, SummaryOfTheSeed) {
    const auto seed = ModeDefaults::seed();
    EXPECT_EQ(seed[0].summary(), "Cleans up your speech into text, verbatim.");
    EXPECT_EQ(seed[1].summary(), "Does what you tell it and types the result.");
    EXPECT_EQ(seed[2].summary(), "Formats your speech as an email, signed with your signature.");
    EXPECT_EQ(seed[3].summary(), "Rewrites formally in Simplified Chinese.");
    EXPECT_EQ(seed[4].summary(), "Rewrites formally in the chosen language.");
    EXPECT_EQ(seed[5].summary(), "Reads text from a screen region.");
}

TEST(Mode, SummaryTakesTheFirstRuleThatApplies) {
    const Mode unsignedEmail{.slot = 7, .name = "Quick EMAIL reply", .instructions = "x"};
    EXPECT_EQ(unsignedEmail.summary(), "Formats your speech as an email.");

    Mode screenshotEmail = unsignedEmail;
    screenshotEmail.isScreenshot = true;
    screenshotEmail.isCommand = true;
    EXPECT_EQ(screenshotEmail.summary(), "Reads text from a screen region.");

    Mode commandOnSlotZero = ModeDefaults::seed()[1];
    commandOnSlotZero.slot = 0;
    EXPECT_EQ(commandOnSlotZero.summary(), "Does what you tell it and types the result.");

    // The language is named through the translation table, in any case.
    const Mode german{.slot = 6, .name = "Formal", .instructions = "x", .outputLanguage = "DE"};
    EXPECT_EQ(german.summary(), "Rewrites formally in German.");
    const Mode unknown{.slot = 6, .name = "Formal", .instructions = "x", .outputLanguage = "xx"};
    EXPECT_EQ(unknown.summary(), "Rewrites formally in xx.");
}

TEST(Mode, HotkeyLabelNamesTheTalkKeyAndSlot) {
    EXPECT_EQ(ModeDefaults::seed()[0].hotkeyLabel(), "Fn");
    EXPECT_EQ(ModeDefaults::seed()[3].hotkeyLabel(), "Fn 3");
    EXPECT_EQ((Mode{.slot = 12, .name = "Custom", .instructions = ""}.hotkeyLabel()), "Fn 12");
}

}  // namespace
}  // namespace tevra
