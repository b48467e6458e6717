#include "polish/prompt_builder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "polish/mode_defaults.h"

namespace tevra {
namespace {

// Golden files hold the expected prompt exactly, plus the one line feed that
// ends every text file.
std::string golden(const std::string& name) {
    const auto path = std::filesystem::path(__FILE__).parent_path() / "golden" / name;
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.good()) << "missing golden file " << path;
    std::ostringstream content;
    content << file.rdbuf();
    std::string text = content.str();
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

Mode seedMode(std::size_t slot) {
    return ModeDefaults::seed().at(slot);
}

const std::vector<std::string> kDictionary = {"Tevra", "GitHub"};
const std::vector<Replacement> kReplacements = {
    {"teh", "the"}, {"(\\d+) zl", "$1 zł", true}, {"e mail", "email"}};
const std::vector<Snippet> kSnippets = {{"sig", "Best, Anna"}, {"addr", "ul. Długa 5, Kraków"}};

bool endsWith(std::string_view s, std::string_view suffix) {
    return s.size() >= suffix.size() && s.substr(s.size() - suffix.size()) == suffix;
}

TEST(PromptBuilderSystem, CommandFormHasOnlyItsRulesAndSpellings) {
    Mode command = seedMode(1);
    command.outputLanguage = "pl";
    EXPECT_EQ(
        PromptBuilder::system(command, {"Tevra", "Kestrum", "Łódź"}, kReplacements, kSnippets),
        golden("command.txt"));

    // The command flag is tested before the slot.
    Mode onDictationSlot = command;
    onDictationSlot.slot = 0;
    EXPECT_EQ(PromptBuilder::system(onDictationSlot, {"Tevra", "Kestrum", "Łódź"}, {}, {}),
              golden("command.txt"));

    EXPECT_EQ(PromptBuilder::system(command, {}, {}, {}).find("Exact spellings"),
              std::string::npos);
}

TEST(PromptBuilderSystem, DictationHeadWithAllThreeLists) {
    EXPECT_EQ(PromptBuilder::system(kDictionary, kReplacements, kSnippets),
              golden("dictation.txt"));

    // Slot 0 is dictation even when flagged as a screenshot voice.
    Mode screenshotOnSlotZero = seedMode(0);
    screenshotOnSlotZero.isScreenshot = true;
    EXPECT_EQ(PromptBuilder::system(screenshotOnSlotZero, kDictionary, kReplacements, kSnippets),
              golden("dictation.txt"));
}

TEST(PromptBuilderSystem, ScreenshotHead) {
    EXPECT_EQ(PromptBuilder::system(seedMode(5), {}, {}, {}), golden("screenshot.txt"));
}

TEST(PromptBuilderSystem, GhostwriteHeadLeavesLanguageToContextWhenNoneIsSet) {
    EXPECT_EQ(PromptBuilder::system(seedMode(2), {}, {}, {}, "Anna Nowak"),
              golden("ghostwrite_email.txt"));
}

TEST(PromptBuilderSystem, LanguageBlocks) {
    EXPECT_EQ(PromptBuilder::system(seedMode(3), {}, {}, {}), golden("ghostwrite_chinese.txt"));

    const Mode polish{.slot = 6,
                      .name = "Formal message — pl",
                      .instructions = std::string(ModeDefaults::formalInstructions),
                      .outputLanguage = "pl",
                      .signature = "signs-off"};
    EXPECT_EQ(PromptBuilder::system(polish, {}, {}, {}), golden("ghostwrite_polish.txt"));

    Mode english = seedMode(0);
    english.outputLanguage = "en";
    EXPECT_EQ(PromptBuilder::system(english, {}, {}, {}), golden("dictation_english.txt"));

    Mode german = seedMode(5);
    german.outputLanguage = "de";
    EXPECT_EQ(PromptBuilder::system(german, {}, {}, {}), golden("screenshot_german.txt"));
}

TEST(PromptBuilderSystem, OtherCodesAreNamedWithoutRegister) {
    Mode mode = seedMode(4);
    mode.outputLanguage = "xx";
    EXPECT_TRUE(endsWith(PromptBuilder::system(mode, {}, {}, {}), "\n\nWrite the output in xx."));

    // Only the exact code "pl" brings the register.
    mode.outputLanguage = "PL";
    const auto upper = PromptBuilder::system(mode, {}, {}, {});
    EXPECT_TRUE(endsWith(upper, "\n\nWrite the output in Polish."));
    EXPECT_EQ(upper.find("POLISH BUSINESS REGISTER"), std::string::npos);
}

TEST(PromptBuilderSystem, PatternRulesNeverReachTheModel) {
    const std::vector<Replacement> patternsOnly = {{"(\\d+) zl", "$1 zł", true}};
    const auto prompt = PromptBuilder::system(seedMode(0), {}, patternsOnly, {});
    EXPECT_EQ(prompt.find("Always replace"), std::string::npos);
    EXPECT_EQ(prompt, PromptBuilder::system(seedMode(0), {}, {}, {}));
}

TEST(PromptBuilderOtherPrompts, InstructAndTranslate) {
    EXPECT_EQ(PromptBuilder::instructSystem({"Tevra", "Kestrum"}), golden("instruct.txt"));
    EXPECT_EQ(PromptBuilder::instructSystem({}).find("Exact spellings"), std::string::npos);
    EXPECT_EQ(PromptBuilder::translateSystem("zh"), golden("translate_chinese.txt"));
}

TEST(PromptBuilderUser, WritesEachContextLineUnderItsCondition) {
    PolishContext full;
    full.appName = "Mail";
    full.bundleID = "org.gnome.Evolution";
    full.windowTitle = "Re: Oferta 2024/17";
    full.focusedText = "Dzień dobry,\n\ndziękujemy za zapytanie.";
    full.tone = "formal, warm";
    EXPECT_EQ(PromptBuilder::user("przesyłamy ofertę w załączniku", full), golden("user.txt"));

    EXPECT_EQ(PromptBuilder::user("hi", {}), "\nDictation:\nhi");

    PolishContext emptyTitle;
    emptyTitle.appName = "Mail";
    emptyTitle.windowTitle = "";
    EXPECT_EQ(PromptBuilder::user("hi", emptyTitle), "Target app: Mail\n\nDictation:\nhi");

    PolishContext titleWithoutApp;
    titleWithoutApp.windowTitle = "Inbox";
    titleWithoutApp.focusedText = "";
    EXPECT_EQ(PromptBuilder::user("hi", titleWithoutApp), "\nDictation:\nhi");

    PolishContext emptyButPresent;
    emptyButPresent.appName = "";
    emptyButPresent.tone = "";
    EXPECT_EQ(PromptBuilder::user("hi", emptyButPresent), "Target app: \nTone: \n\nDictation:\nhi");
}

TEST(PromptBuilderUser, FocusedTextIsCutToFifteenHundredCharacters) {
    // "é" as a base letter and a combining accent: one character, two code points.
    const std::string character = "e\u0301";
    std::string head;
    for (int i = 0; i < 1500; ++i) {
        head += character;
    }
    const std::string expected =
        "Text already in the field (context — do not repeat it):\n" + head + "\n\nDictation:\nx";

    PolishContext context;
    context.focusedText = head;
    EXPECT_EQ(PromptBuilder::user("x", context), expected);
    for (int i = 1500; i < 2000; ++i) {
        *context.focusedText += character;
    }
    EXPECT_EQ(PromptBuilder::user("x", context), expected);
}

TEST(PromptBuilderLanguageName, FindsCodesInAnyCaseAndReturnsUnknownOnesAsGiven) {
    EXPECT_EQ(PromptBuilder::languageName("ZH"), "Simplified Chinese");
    EXPECT_EQ(PromptBuilder::languageName("PL"), "Polish");
    EXPECT_EQ(PromptBuilder::languageName("de"), "German");
    EXPECT_EQ(PromptBuilder::languageName("xx"), "xx");
    EXPECT_EQ(PromptBuilder::languageName("XX"), "XX");
    EXPECT_EQ(PromptBuilder::languageName(""), "");
}

}  // namespace
}  // namespace tevra
