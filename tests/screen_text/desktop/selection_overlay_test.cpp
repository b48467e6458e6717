// The selection tool on the test display: the real overlay over a frozen
// screen, Tesseract's words, the mouse and keys of xdotool.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>

#include "screen_text_rig.h"

namespace tevra {
namespace {

using testing::ClipboardOwnerProcess;
using testing::onScreen;
using testing::PeerProcess;
using testing::SelectionRig;
using testing::TextWindow;
using testing::waitUntil;
using testing::xdotool;

bool peerIsActive(SelectionRig& rig, const PeerProcess& peer) {
    return rig.x->pid(rig.x->activeWindow()) == peer.pid();
}

TEST(SelectionOverlayOnX11, ADragAndAClickPickLinesAndReturnCopiesThem) {
    SelectionRig rig;
    TextWindow page("Selection page",
                    {"First line of text\nSecond line here\n\nThird line at last"},
                    QRect(640, 120, 560, 320));
    PeerProcess peer({.title = "Selection notes"});
    peer.activate();

    SelectionView* view = rig.startAndWaitForWords();
    ASSERT_TRUE(view);
    xdotool(QStringList{"mousemove"} + testing::at(onScreen(*view, "First")) +
            QStringList{"mousedown", "1", "mousemove"} + testing::at(onScreen(*view, "here")) +
            QStringList{"mouseup", "1"});
    xdotool(QStringList{"mousemove"} + testing::at(onScreen(*view, "Third")) +
            QStringList{"click", "1"});
    ASSERT_TRUE(waitUntil([&] { return view->state()->captured().size() == 2; }, 10))
        << view->state()->debugLinesDump();
    testing::keepScreenshot(*view, "selection-two-picks");
    EXPECT_GT(view->debugRenderCoverage(), 0.95) << "a pick's highlight misses its words:\n"
                                                 << view->state()->debugLinesDump();

    xdotool({"key", "Return"});
    const std::string expected = "First line of text\nSecond line here\n\nThird line at last";
    ASSERT_TRUE(waitUntil([&] { return !rig.controller->isActive(); }, 10));
    EXPECT_THAT(rig.copied, ::testing::ElementsAre(expected));
    peer.send("read-clipboard");
    const auto seen = peer.waitFor("clipboard", 10);
    ASSERT_TRUE(seen);
    EXPECT_EQ((*seen)["text"], expected) << "another application pastes what was picked";
    EXPECT_TRUE(waitUntil([&] { return peerIsActive(rig, peer); }, 10));
}

TEST(SelectionOverlayOnX11, EscapeLeavesTheClipboardAsItWasAndTheKeysWithTheApplication) {
    SelectionRig rig;
    TextWindow page("Escape page", {"Nothing here is copied"}, QRect(640, 120, 560, 200));
    ClipboardOwnerProcess owner({{"text/plain", "copied before"}});
    PeerProcess peer({.title = "Escape notes"});
    peer.activate();
    const auto changes = rig.clipboard->changeCount();

    SelectionView* view = rig.startAndWaitForWords();
    ASSERT_TRUE(view);
    xdotool(QStringList{"mousemove"} + testing::at(onScreen(*view, "Nothing")) +
            QStringList{"click", "1"});
    xdotool({"key", "Escape"});
    ASSERT_TRUE(waitUntil([&] { return !rig.controller->isActive(); }, 10));
    EXPECT_TRUE(rig.copied.empty());
    EXPECT_EQ(rig.clipboard->changeCount(), changes);
    EXPECT_EQ(rig.clipboard->text(), "copied before");

    // Typing goes on where it was before the tool came up.
    ASSERT_TRUE(waitUntil([&] { return peerIsActive(rig, peer); }, 10));
    xdotool({"type", "k"});
    EXPECT_TRUE(peer.waitFor("text", 10, [](const auto& e) { return e["text"] == "k"; }));
}

}  // namespace
}  // namespace tevra
