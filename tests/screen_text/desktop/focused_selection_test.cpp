// The focused selection read from a GTK application through the copy chord
// and the clipboard of the test display.
#include "screen_text/focused_selection.h"

#include <gtest/gtest.h>

#include "../../capture/desktop/desktop_rig.h"

namespace tevra {
namespace {

using testing::ClipboardOwnerProcess;
using testing::DesktopRig;
using testing::PeerProcess;

std::optional<std::optional<std::string>> readSelection(DesktopRig& rig) {
    FocusedSelection reader(rig.queue, rig.clipboard, rig.keys, rig.secure);
    std::optional<std::optional<std::string>> result;
    reader.read([&](std::optional<std::string> text) { result = std::move(text); });
    testing::waitUntil([&] { return result.has_value(); }, 10);
    return result;
}

TEST(FocusedSelectionOnX11, CopiesWhatIsSelectedAndPutsTheClipboardBack) {
    DesktopRig rig;
    ClipboardOwnerProcess owner({{"text/plain", "copied earlier"}});
    PeerProcess peer({.title = "Selected text", .text = "  the words\nto read ", .textview = true});
    peer.activate();

    testing::xdotool({"key", "ctrl+a"});
    auto result = readSelection(rig);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->value_or("(nothing)"), "  the words\nto read ")
        << "blanks and line breaks stay";
    EXPECT_EQ(rig.clipboard->text(), "copied earlier");

    // With the selection gone, the chord copies nothing.
    testing::xdotool({"key", "ctrl+End"});
    result = readSelection(rig);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->value_or("(nothing)"), "(nothing)");
    EXPECT_EQ(rig.clipboard->text(), "copied earlier");
    peer.send("read-clipboard");
    const auto seen = peer.waitFor("clipboard", 10);
    ASSERT_TRUE(seen);
    EXPECT_EQ((*seen)["text"], "copied earlier");
}

}  // namespace
}  // namespace tevra
