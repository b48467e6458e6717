#include "polish/mode.h"

#include <gtest/gtest.h>

#include "polish/golden.h"
#include "polish/mode_defaults.h"
#include "polish/voice.h"

namespace tevra {
namespace {

TEST(ModeDefaults, SeedsSixEnabledVoicesWithTheirSummaries) {
    struct Row {
        std::string name, instructions, outputLanguage, signature, summary;
        bool isScreenshot, isCommand;
    };
    const Row expected[] = {
        {"Dictate", "0_dictate.txt", "", "", "Cleans up your speech into text, verbatim.", false,
         false},
        {"Command", "1_command.txt", "", "", "Does what you tell it and types the result.", false,
         true},
        {"Email", "2_email.txt", "", "signs-off",
         "Formats your speech as an email, signed with your signature.", false, false},
        {"Formal message — 中文", "3_formal_chinese.txt", "zh", "signs-off",
         "Rewrites formally in Simplified Chinese.", false, false},
        {"Formal message", "4_formal.txt", "", "signs-off",
         "Rewrites formally in the chosen language.", false, false},
        {"Screenshot → text", "5_screenshot.txt", "", "", "Reads text from a screen region.", true,
         false},
    };
    const auto seed = ModeDefaults::seed();
    ASSERT_EQ(seed.size(), std::size(expected));
    for (std::size_t i = 0; i < seed.size(); ++i) {
        const Row& row = expected[i];
        const Mode want{.slot = static_cast<std::int64_t>(i),
                        .name = row.name,
                        .instructions = testing::golden("voices/" + row.instructions),
                        .outputLanguage = row.outputLanguage,
                        .signature = row.signature,
                        .isScreenshot = row.isScreenshot,
                        .isCommand = row.isCommand,
                        .enabled = true};
        EXPECT_EQ(seed[i], want) << row.name;
        EXPECT_EQ(seed[i].summary(), row.summary);
    }
    EXPECT_EQ(ModeDefaults::formalInstructions, testing::golden("voices/4_formal.txt"));
    EXPECT_EQ(Voice::signOffMarker, "signs-off");
}

TEST(Mode, SummaryTakesTheFirstRuleThatApplies) {
    Mode mode{.slot = 7, .name = "Quick EMAIL reply", .instructions = "x"};
    EXPECT_EQ(mode.summary(), "Formats your speech as an email.");
    mode.isScreenshot = mode.isCommand = true;
    EXPECT_EQ(mode.summary(), "Reads text from a screen region.");

    Mode commandOnSlotZero{.slot = 0, .name = "Command", .instructions = "x", .isCommand = true};
    EXPECT_EQ(commandOnSlotZero.summary(), "Does what you tell it and types the result.");

    // The language is named through the translation table, in any case.
    Mode formal{.slot = 6, .name = "Formal", .instructions = "x", .outputLanguage = "DE"};
    EXPECT_EQ(formal.summary(), "Rewrites formally in German.");
    formal.outputLanguage = "xx";
    EXPECT_EQ(formal.summary(), "Rewrites formally in xx.");
}

TEST(Voice, DetectLanguageByScriptLettersAndMarkerWords) {
    const std::pair<std::string, std::string> cases[] = {
        {"Zamówienie 浅灰色 jest gotowe", "zh"},  // Han wins over everything else
        {"meeting in 東京 tomorrow", "zh"},
        {"ZAŻÓŁĆ", "pl"},
        {"Łukasz says hello", "pl"},
        // "a" followed by a combining ogonek is the letter "ą".
        {"prosze o szybka odpowiedz\u0328", "en"},
        {"prosze o szybka\u0328 odpowiedz", "pl"},
        // Marker words need blanks around them.
        {"nie", "pl"},
        {"Nie wiem", "pl"},
        {"to jest ok", "pl"},
        {"kawa oraz herbata", "pl"},
        {"the internet is nice", "en"},
        {"to jest.", "en"},
        {"", "en"},
    };
    for (const auto& [text, language] : cases) {
        EXPECT_EQ(Voice::detectLanguage(text), language) << text;
    }
}

}  // namespace
}  // namespace tevra
