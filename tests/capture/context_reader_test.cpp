#include "capture/context_reader.h"

#include <gtest/gtest.h>

#include "core/text.h"
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

TEST(ContextReader, FillsEveryFieldFromTheFocusedApplication) {
    ReaderRig rig;
    const std::vector<ToneProfile> profiles = {{"thunder", "friendly", "app"},
                                               {"quarterly", "formal", "title"}};
    PolishContext context = rig.reader.snapshot(profiles);
    EXPECT_EQ(context.appName, "Thunderbird");
    EXPECT_EQ(context.bundleID, "thunderbird");
    EXPECT_EQ(context.windowTitle, "Write: Quarterly numbers - Thunderbird");
    EXPECT_EQ(context.focusedText, "Dear Anna,");
    EXPECT_EQ(context.tone, "formal") << "a title profile beats an application profile";
}

TEST(ContextReader, KeepsTheLastFifteenHundredCharactersOfTheField) {
    ReaderRig rig;
    std::string field;
    for (int i = 0; i < 1000; ++i) {
        field +=
            "e\xCC\x81"
            "ab";  // "é" as e + combining acute: one character, 3 bytes
    }
    field += "END!";
    rig.probe->text = field;  // 3004 characters
    PolishContext context = rig.reader.snapshot({});
    ASSERT_TRUE(context.focusedText);
    EXPECT_EQ(text::characterCount(*context.focusedText), 1500u);
    EXPECT_TRUE(context.focusedText->ends_with("abEND!"));
    EXPECT_TRUE(context.focusedText->starts_with("ab"));
}

TEST(ContextReader, AnEmptyOrNonTextFieldGivesNoText) {
    ReaderRig rig;
    rig.probe->text = "";
    EXPECT_EQ(rig.reader.snapshot({}).focusedText, std::nullopt);
    rig.probe->text = std::nullopt;  // a slider, a button
    EXPECT_EQ(rig.reader.snapshot({}).focusedText, std::nullopt);
}

TEST(ContextReader, WithoutFocusAccessStillNamesTheApplicationAndItsTone) {
    ReaderRig rig;
    rig.probe->trusted = false;
    PolishContext context =
        rig.reader.snapshot({{"quarterly", "formal", "title"}, {"thunderbird", "friendly", "app"}});
    EXPECT_EQ(context.appName, "Thunderbird");
    EXPECT_EQ(context.bundleID, "thunderbird");
    EXPECT_EQ(context.windowTitle, std::nullopt);
    EXPECT_EQ(context.focusedText, std::nullopt);
    EXPECT_EQ(context.tone, "friendly");
    EXPECT_EQ(rig.probe->asked, std::vector<std::string>{"front"});
}

TEST(ContextReader, NoFocusedApplicationLeavesEveryFieldEmpty) {
    ReaderRig rig;
    rig.probe->front = std::nullopt;
    PolishContext context = rig.reader.snapshot({{"thunderbird", "casual", "app"}});
    EXPECT_EQ(context.appName, std::nullopt);
    EXPECT_EQ(context.bundleID, std::nullopt);
    EXPECT_EQ(context.windowTitle, std::nullopt);
    EXPECT_EQ(context.focusedText, std::nullopt);
    EXPECT_EQ(context.tone, std::nullopt);
    EXPECT_EQ(rig.probe->asked, std::vector<std::string>{"front"});
}

}  // namespace
}  // namespace tevra
