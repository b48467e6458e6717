#include <gtest/gtest.h>

#include "polish/prompt_builder.h"

namespace tevra {
namespace {

using PromptBuilder::tone;

const ToneProfile browser{"firefox", "neutral", "app"};
const ToneProfile gmail{"Gmail", "formal", "title"};

TEST(Tone, TitleProfileBeatsApplicationProfileInEitherOrder) {
    const std::optional<std::string> bundle = "org.mozilla.firefox";
    const std::optional<std::string> title = "Inbox - GMAIL - Mozilla Firefox";
    EXPECT_EQ(tone(bundle, title, {browser, gmail}), "formal");
    EXPECT_EQ(tone(bundle, title, {gmail, browser}), "formal");

    // A title that matches nothing falls through to the application.
    EXPECT_EQ(tone(bundle, "Wikipedia", {gmail, browser}), "neutral");
    // Without a title only application profiles are tried.
    EXPECT_EQ(tone(bundle, std::nullopt, {gmail, browser}), "neutral");
    // Without an application id only title profiles are tried.
    EXPECT_EQ(tone(std::nullopt, "Wikipedia", {gmail, browser}), std::nullopt);
    EXPECT_EQ(tone(std::nullopt, std::nullopt, {gmail, browser}), std::nullopt);
}

TEST(Tone, MatchesSubstringsInAnyCaseAndTakesTheFirstWithinAKind) {
    const std::vector<ToneProfile> profiles = {
        {"TELEGRAM", "casual", "app"}, {"org.", "plain", "app"}, {"gram", "never", "app"}};
    EXPECT_EQ(tone("org.Telegram.desktop", std::nullopt, profiles), "casual");
    EXPECT_EQ(tone("org.gnome.Evolution", std::nullopt, profiles), "plain");
    // A title is never tested against application profiles.
    EXPECT_EQ(tone(std::nullopt, "telegram", profiles), std::nullopt);
}

TEST(Tone, EmptyPatternsNeverMatch) {
    EXPECT_EQ(tone("org.gnome.Evolution", "Inbox",
                   {{"", "from title", "title"}, {"", "from app", "app"}}),
              std::nullopt);
}

TEST(Tone, OnlyTitleInAnyCaseIsATitleMatch) {
    EXPECT_EQ(tone(std::nullopt, "Slack | general", {{"slack", "brief", "TITLE"}}), "brief");
    for (const std::string kind : {"", "window", "titles", "App"}) {
        const std::vector<ToneProfile> profiles = {{"slack", "brief", kind}};
        EXPECT_EQ(tone(std::nullopt, "Slack | general", profiles), std::nullopt) << kind;
        EXPECT_EQ(tone("com.slack.Slack", std::nullopt, profiles), "brief") << kind;
    }
}

TEST(Tone, PairsAreApplicationProfiles) {
    const std::vector<std::pair<std::string, std::string>> pairs = {{"Gmail", "formal"},
                                                                    {"slack", "brief"}};
    EXPECT_EQ(tone("com.slack.Slack", pairs), "brief");
    EXPECT_EQ(tone("mail.gmail.app", pairs), "formal");
    EXPECT_EQ(tone(std::nullopt, pairs), std::nullopt);
}

}  // namespace
}  // namespace tevra
