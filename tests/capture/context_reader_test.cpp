#include "capture/context_reader.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "support/recording_capture.h"

namespace tevra {
namespace {

struct ReaderRig {
    std::shared_ptr<testing::ScriptedFocusProbe> probe =
        std::make_shared<testing::ScriptedFocusProbe>();
    ContextReader reader{probe};

    ReaderRig() {
        probe->front = FrontApplication{"Thunderbird", "thunderbird", 4242, 0x1200007};
        probe->title = "Write: Quarterly numbers - Thunderbird";
        probe->text = "Dear Anna,";
    }
};

const std::vector<ToneProfile> kProfiles = {{"thunder", "friendly", "app"},
                                            {"quarterly", "formal", "title"}};

TEST(ContextReader, FillsEveryFieldFromTheFocusedApplicationAndKeepsTheFieldsTail) {
    ReaderRig rig;
    PolishContext context = rig.reader.snapshot(kProfiles);
    EXPECT_EQ(context.appName, "Thunderbird");
    EXPECT_EQ(context.bundleID, "thunderbird");
    EXPECT_EQ(context.windowTitle, "Write: Quarterly numbers - Thunderbird");
    EXPECT_EQ(context.focusedText, "Dear Anna,");
    EXPECT_EQ(context.tone, "formal") << "a title profile beats an application profile";

    std::string field;
    for (int i = 0; i < 1000; ++i) {
        field +=
            "e\xCC\x81"
            "ab";  // "é" as e + combining acute: one character
    }
    rig.probe->text = field + "END!";  // 3004 characters
    context = rig.reader.snapshot({});
    ASSERT_TRUE(context.focusedText);
    EXPECT_EQ(text::characterCount(*context.focusedText), 1500u);
    EXPECT_TRUE(context.focusedText->starts_with("ab"));
    EXPECT_TRUE(context.focusedText->ends_with("abEND!"));

    for (const std::optional<std::string>& none :
         {std::optional<std::string>(""), std::optional<std::string>()}) {
        rig.probe->text = none;  // an empty field, or a slider or a button
        EXPECT_EQ(rig.reader.snapshot({}).focusedText, std::nullopt);
    }
}

TEST(ContextReader, WithoutFocusAccessOrAFocusedApplicationAsksNoMore) {
    ReaderRig rig;
    rig.probe->trusted = false;
    PolishContext context = rig.reader.snapshot(kProfiles);
    EXPECT_EQ(context.appName, "Thunderbird");
    EXPECT_EQ(context.bundleID, "thunderbird");
    EXPECT_EQ(context.windowTitle, std::nullopt);
    EXPECT_EQ(context.focusedText, std::nullopt);
    EXPECT_EQ(context.tone, "friendly") << "the application's tone still applies";
    EXPECT_EQ(rig.probe->asked, std::vector<std::string>{"front"});

    ReaderRig nothing;
    nothing.probe->front = std::nullopt;
    context = nothing.reader.snapshot(kProfiles);
    EXPECT_EQ(context.appName, std::nullopt);
    EXPECT_EQ(context.bundleID, std::nullopt);
    EXPECT_EQ(context.windowTitle, std::nullopt);
    EXPECT_EQ(context.focusedText, std::nullopt);
    EXPECT_EQ(context.tone, std::nullopt);
    EXPECT_EQ(nothing.probe->asked, std::vector<std::string>{"front"});
}

}  // namespace
}  // namespace tevra
