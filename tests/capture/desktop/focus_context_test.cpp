#include <gtest/gtest.h>

#include "base/text.h"
#include "desktop_rig.h"

namespace tevra {
namespace {

using testing::DesktopRig;
using testing::PeerProcess;
using testing::waitUntil;

TEST(FocusContextOnX11, NamesTheActiveApplicationItsWindowAndItsFieldsText) {
    DesktopRig rig;
    PeerProcess peer(
        {.title = "Quarterly report — draft", .wmClass = "TevraPeer", .text = "Dear Anna,"});
    peer.activate();

    const auto front = rig.probe->frontApplication();
    ASSERT_TRUE(front);
    EXPECT_EQ(front->pid, peer.pid());
    EXPECT_EQ(std::to_string(front->window), testing::xdotool({"getactivewindow"}));

    PolishContext context;
    EXPECT_TRUE(waitUntil(
        [&] {
            context = rig.reader.snapshot({{"quarterly", "formal", "title"}});
            return context.focusedText.has_value();
        },
        10.0))
        << "the field never appeared on the accessibility bus";
    EXPECT_EQ(context.appName, "TevraPeer");
    EXPECT_EQ(context.bundleID, "TevraPeer");
    EXPECT_EQ(context.windowTitle, "Quarterly report — draft");
    EXPECT_EQ(context.focusedText, "Dear Anna,");
    EXPECT_EQ(context.tone, "formal");
}

TEST(FocusContextOnX11, KeepsTheTailOfALongDocument) {
    DesktopRig rig;
    std::string document;
    for (int line = 0; line < 120; ++line) {
        document += "Zażółć gęślą jaźń, linia " + std::to_string(line) + ".\n";
    }
    ASSERT_GT(text::characterCount(document), 3000u);
    PeerProcess peer({.title = "Long document", .text = document, .textview = true});
    peer.activate();

    std::optional<std::string> focused;
    ASSERT_TRUE(waitUntil(
        [&] {
            focused = rig.reader.snapshot({}).focusedText;
            return focused.has_value();
        },
        10.0));
    EXPECT_EQ(*focused, text::suffixCharacters(document, 1500));
}

TEST(FocusContextOnX11, PasswordFieldsAndForeignKeyboardGrabsAreSecureInput) {
    DesktopRig rig;
    {
        // Sandboxed: its window's process id is not its accessible's, so only
        // the focus itself can tell where the keys go.
        PeerProcess password(
            {.title = "Password", .text = "hunter2", .password = true, .sandboxed = true});
        password.activate();
        EXPECT_TRUE(waitUntil([&] { return rig.secure->isActive(); }, 10.0));
        EXPECT_TRUE(rig.secure->passwordFieldFocused());
        EXPECT_EQ(rig.reader.snapshot({}).focusedText, std::nullopt) << "a password is never read";
    }

    PeerProcess plain({.title = "Plain", .text = "visible"});
    plain.activate();
    ASSERT_TRUE(waitUntil([&] { return rig.reader.snapshot({}).focusedText == "visible"; }, 10.0));
    EXPECT_FALSE(rig.secure->isActive());

    plain.send("grab-keyboard");
    const auto grab = plain.waitFor("grab", 10);
    ASSERT_TRUE(grab);
    ASSERT_TRUE((*grab)["ok"]);
    EXPECT_TRUE(rig.secure->keyboardGrabbedElsewhere());
    EXPECT_TRUE(rig.secure->isActive());

    plain.send("ungrab-keyboard");
    ASSERT_TRUE(plain.waitFor("grab", 10));
    EXPECT_TRUE(waitUntil([&] { return !rig.secure->isActive(); }, 10.0));
}

}  // namespace
}  // namespace tevra
