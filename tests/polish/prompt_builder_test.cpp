#include "polish/prompt_builder.h"

#include <gtest/gtest.h>

#include "polish/golden.h"
#include "polish/mode_defaults.h"

namespace tevra {
namespace {

using testing::golden;

Mode seedMode(std::size_t slot, std::string outputLanguage = "") {
    Mode mode = ModeDefaults::seed().at(slot);
    if (!outputLanguage.empty()) {
        mode.outputLanguage = std::move(outputLanguage);
    }
    return mode;
}

const std::vector<std::string> kDictionary = {"Tevra", "GitHub"};
const std::vector<Replacement> kReplacements = {
    {"teh", "the"}, {"(\\d+) zl", "$1 zł", true}, {"e mail", "email"}};
const std::vector<Snippet> kSnippets = {{"sig", "Best, Anna"}, {"addr", "ul. Długa 5, Kraków"}};

TEST(PromptBuilderSystem, EachFormAndLanguageBlockMatchesItsGolden) {
    const std::vector<std::string> commandWords = {"Tevra", "Kestrum", "Łódź"};
    Mode command = seedMode(1, "pl");
    EXPECT_EQ(PromptBuilder::system(command, commandWords, kReplacements, kSnippets),
              golden("command.txt"));
    // The command flag is tested before the slot.
    command.slot = 0;
    EXPECT_EQ(PromptBuilder::system(command, commandWords, {}, {}), golden("command.txt"));
    EXPECT_EQ(PromptBuilder::system(command, {}, {}, {}).find("Exact spellings"),
              std::string::npos);

    EXPECT_EQ(PromptBuilder::system(kDictionary, kReplacements, kSnippets),
              golden("dictation.txt"));
    // Slot 0 is dictation even when flagged as a screenshot voice.
    Mode screenshotOnSlotZero = seedMode(0);
    screenshotOnSlotZero.isScreenshot = true;
    EXPECT_EQ(PromptBuilder::system(screenshotOnSlotZero, kDictionary, kReplacements, kSnippets),
              golden("dictation.txt"));

    EXPECT_EQ(PromptBuilder::system(seedMode(5), {}, {}, {}), golden("screenshot.txt"));
    EXPECT_EQ(PromptBuilder::system(seedMode(2), {}, {}, {}, "Anna Nowak"),
              golden("ghostwrite_email.txt"));
    EXPECT_EQ(PromptBuilder::system(seedMode(3), {}, {}, {}), golden("ghostwrite_chinese.txt"));
    const Mode polish{.slot = 6,
                      .name = "Formal message — pl",
                      .instructions = std::string(ModeDefaults::formalInstructions),
                      .outputLanguage = "pl",
                      .signature = "signs-off"};
    EXPECT_EQ(PromptBuilder::system(polish, {}, {}, {}), golden("ghostwrite_polish.txt"));
    EXPECT_EQ(PromptBuilder::system(seedMode(0, "en"), {}, {}, {}),
              golden("dictation_english.txt"));
    EXPECT_EQ(PromptBuilder::system(seedMode(5, "de"), {}, {}, {}),
              golden("screenshot_german.txt"));

    EXPECT_EQ(PromptBuilder::instructSystem({"Tevra", "Kestrum"}), golden("instruct.txt"));
    EXPECT_EQ(PromptBuilder::instructSystem({}).find("Exact spellings"), std::string::npos);
    EXPECT_EQ(PromptBuilder::translateSystem("zh"), golden("translate_chinese.txt"));
}

TEST(PromptBuilderSystem, OtherCodesAreNamedWithoutRegisterAndPatternRulesStayLocal) {
    EXPECT_TRUE(PromptBuilder::system(seedMode(4, "xx"), {}, {}, {})
                    .ends_with("\n\nWrite the output in xx."));
    // Only the exact code "pl" brings the register.
    const auto upper = PromptBuilder::system(seedMode(4, "PL"), {}, {}, {});
    EXPECT_TRUE(upper.ends_with("\n\nWrite the output in Polish."));
    EXPECT_EQ(upper.find("POLISH BUSINESS REGISTER"), std::string::npos);

    EXPECT_EQ(PromptBuilder::system(seedMode(0), {}, {{"(\\d+) zl", "$1 zł", true}}, {}),
              PromptBuilder::system(seedMode(0), {}, {}, {}));
}

TEST(PromptBuilderUser, WritesEachContextLineUnderItsCondition) {
    const PolishContext full{"Mail", "org.gnome.Evolution", "Re: Oferta 2024/17",
                             "Dzień dobry,\n\ndziękujemy za zapytanie.", "formal, warm"};
    EXPECT_EQ(PromptBuilder::user("przesyłamy ofertę w załączniku", full), golden("user.txt"));

    const std::pair<PolishContext, std::string> cases[] = {
        {{}, "\nDictation:\nhi"},
        {{"Mail", std::nullopt, "", std::nullopt, std::nullopt},
         "Target app: Mail\n\nDictation:\nhi"},
        {{std::nullopt, std::nullopt, "Inbox", "", std::nullopt}, "\nDictation:\nhi"},
        {{"", std::nullopt, std::nullopt, std::nullopt, ""},
         "Target app: \nTone: \n\nDictation:\nhi"},
    };
    for (const auto& [context, expected] : cases) {
        EXPECT_EQ(PromptBuilder::user("hi", context), expected);
    }

    // The focused text is cut to 1500 characters; "é" here is two code points.
    std::string head;
    for (int i = 0; i < 1500; ++i) {
        head += "e\u0301";
    }
    PolishContext longField;
    longField.focusedText = head + "e\u0301e\u0301";
    EXPECT_EQ(
        PromptBuilder::user("x", longField),
        "Text already in the field (context — do not repeat it):\n" + head + "\n\nDictation:\nx");
}

TEST(PromptBuilderLanguageName, FindsCodesInAnyCaseAndReturnsUnknownOnesAsGiven) {
    for (const auto& [code, name] :
         std::vector<std::pair<std::string, std::string>>{{"ZH", "Simplified Chinese"},
                                                          {"PL", "Polish"},
                                                          {"de", "German"},
                                                          {"xx", "xx"},
                                                          {"XX", "XX"},
                                                          {"", ""}}) {
        EXPECT_EQ(PromptBuilder::languageName(code), name);
    }
}

TEST(Tone, TitleProfilesBeatApplicationProfilesAndMatchSubstringsInAnyCase) {
    using PromptBuilder::tone;
    const ToneProfile browser{"firefox", "neutral", "app"};
    const ToneProfile gmail{"Gmail", "formal", "title"};
    const std::optional<std::string> bundle = "org.mozilla.firefox";
    EXPECT_EQ(tone(bundle, "Inbox - GMAIL - Mozilla Firefox", {browser, gmail}), "formal");
    EXPECT_EQ(tone(bundle, "Inbox - GMAIL - Mozilla Firefox", {gmail, browser}), "formal");
    EXPECT_EQ(tone(bundle, "Wikipedia", {gmail, browser}), "neutral");
    EXPECT_EQ(tone(bundle, std::nullopt, {gmail, browser}), "neutral");
    EXPECT_EQ(tone(std::nullopt, "Wikipedia", {gmail, browser}), std::nullopt);

    // The first match within a kind; a title is never tested against application profiles.
    const std::vector<ToneProfile> apps = {
        {"TELEGRAM", "casual", "app"}, {"org.", "plain", "app"}, {"gram", "never", "app"}};
    EXPECT_EQ(tone("org.Telegram.desktop", std::nullopt, apps), "casual");
    EXPECT_EQ(tone("org.gnome.Evolution", std::nullopt, apps), "plain");
    EXPECT_EQ(tone(std::nullopt, "telegram", apps), std::nullopt);

    EXPECT_EQ(tone("org.gnome.Evolution", "Inbox", {{"", "t", "title"}, {"", "a", "app"}}),
              std::nullopt)
        << "empty patterns never match";

    // Only "title", in any case, is a title match; any other kind is an application one.
    EXPECT_EQ(tone(std::nullopt, "Slack | general", {{"slack", "brief", "TITLE"}}), "brief");
    for (const std::string kind : {"", "window", "titles", "App"}) {
        EXPECT_EQ(tone(std::nullopt, "Slack | general", {{"slack", "brief", kind}}), std::nullopt);
        EXPECT_EQ(tone("com.slack.Slack", std::nullopt, {{"slack", "brief", kind}}), "brief");
    }

    const std::vector<std::pair<std::string, std::string>> pairs = {{"Gmail", "formal"},
                                                                    {"slack", "brief"}};
    EXPECT_EQ(tone("com.slack.Slack", pairs), "brief");
    EXPECT_EQ(tone("mail.gmail.app", pairs), "formal");
    EXPECT_EQ(tone(std::nullopt, pairs), std::nullopt);
}

}  // namespace
}  // namespace tevra
