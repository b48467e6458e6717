#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QByteArray>
#include <QElapsedTimer>

#include "desktop_rig.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::ClipboardOwnerProcess;
using ::testing::Contains;
using testing::DesktopRig;
using ::testing::Not;
using testing::PeerProcess;
using testing::waitUntil;

std::string base64(const std::string& bytes) {
    return QByteArray::fromStdString(bytes).toBase64().toStdString();
}

auto textIs(const std::string& expected) {
    return [expected](const nlohmann::json& event) { return event["text"] == expected; };
}

TEST(TextInsertionOnX11, PastesIntoAnotherApplicationAndBringsBackTextAndImage) {
    DesktopRig rig;
    const std::string png = testing::smallPng();
    ClipboardOwnerProcess owner({{"text/plain", "an earlier copy"}, {"image/png", png}});
    PeerProcess peer({.title = "Paste target"});
    peer.activate();
    ASSERT_TRUE(rig.inserter.canAutoPaste());

    QElapsedTimer clock;
    clock.start();
    ASSERT_TRUE(rig.inserter.insert("Dictated into GTK, naïvely ✓"));
    const auto key = peer.waitFor("key", 10, [](const auto& e) { return e["name"] == "v"; });
    ASSERT_TRUE(key);
    EXPECT_TRUE((*key)["ctrl"]);
    EXPECT_FALSE((*key)["shift"]) << "Ctrl+V, not the terminals' chord";
    EXPECT_TRUE(peer.waitFor("text", 10, textIs("Dictated into GTK, naïvely ✓")))
        << "the text never arrived in the field";

    ASSERT_TRUE(waitUntil([&] { return rig.clipboard->text() == "an earlier copy"; }, 10.0));
    EXPECT_GE(clock.elapsed(), 1200) << "restored before the paste had time to happen";

    // Another application sees both formats again, byte for byte.
    peer.send("read-clipboard");
    const auto seen = peer.waitFor("clipboard", 10);
    ASSERT_TRUE(seen);
    EXPECT_THAT((*seen)["targets"], Contains("image/png"));
    EXPECT_EQ((*seen)["text"], "an earlier copy");
    EXPECT_EQ((*seen)["png"], base64(png));
    EXPECT_THAT((*seen)["targets"], Not(Contains("x-kde-passwordManagerHint")));
}

TEST(TextInsertionOnX11, AModifierStillHeldIsWaitedForAndNeverSpoilsThePaste) {
    // Tested against the server's keymap: the paste's own device cannot let go
    // of a key that another keyboard holds, so nothing may be released for
    // the user; the chord waits until the user lets go.
    DesktopRig rig;
    PeerProcess peer({.title = "Alt still held"});
    peer.activate();
    std::optional<bool> sent;
    testing::xdotool({"keydown", "Alt_L"});
    ASSERT_TRUE(rig.inserter.insert("Typed once Alt was up", [&](bool pasted) { sent = pasted; }));
    ASSERT_TRUE(rig.passMoment(0.2));
    EXPECT_FALSE(sent) << "no chord while Alt is down";
    testing::xdotool({"keyup", "Alt_L"});
    EXPECT_TRUE(peer.waitFor("text", 10, textIs("Typed once Alt was up")));
    EXPECT_EQ(sent, true);

    // Held all through the wait: no Ctrl+Alt+V, and the text stays for the user.
    sent.reset();
    testing::xdotool({"keydown", "Alt_L"});
    ASSERT_TRUE(rig.inserter.insert("Left on the clipboard", [&](bool pasted) { sent = pasted; }));
    ASSERT_TRUE(waitUntil([&] { return sent.has_value(); }, 10.0));
    testing::xdotool({"keyup", "Alt_L"});
    EXPECT_EQ(sent, false);
    EXPECT_EQ(rig.clipboard->text(), "Left on the clipboard");
    peer.send("quit");
    const auto exit = peer.waitFor("exit", 10);
    ASSERT_TRUE(exit);
    EXPECT_EQ((*exit)["text"], "Typed once Alt was up");
}

TEST(TextInsertionOnX11, XtermGetsThePrimarySelectionOnShiftInsert) {
    DesktopRig rig;
    testing::TempDir dir;
    const auto typed = dir / "typed";
    QProcess xterm;
    xterm.start("xterm", {"-T", "Paste xterm", "-e", "sh", "-c",
                          QString::fromStdString("stty -icanon -echo; cat > " + typed.string())});
    ASSERT_TRUE(xterm.waitForStarted(10000)) << "xterm is missing: run scripts/install-deps";
    ASSERT_TRUE(waitUntil(
        [] {
            return !testing::xdotool({"search", "--name", "Paste xterm"}).empty();
        },
        10));
    testing::xdotool({"search", "--name", "Paste xterm", "windowactivate", "--sync"});

    ASSERT_TRUE(rig.inserter.insert("echo dictated into xterm"));
    const bool arrived =
        waitUntil([&] { return testing::readFile(typed) == "echo dictated into xterm"; }, 10);
    xterm.kill();
    xterm.waitForFinished(5000);
    EXPECT_TRUE(arrived) << "xterm received: \"" << testing::readFile(typed) << "\"";
}

TEST(TextInsertionOnX11, AnEmptyClipboardKeepsTheDictatedText) {
    DesktopRig rig;
    PeerProcess peer({.title = "Empty clipboard"});
    peer.activate();
    const auto before = rig.clipboard->changeCount();

    ASSERT_TRUE(rig.inserter.insert("stays on the clipboard"));
    EXPECT_TRUE(peer.waitFor("text", 10, textIs("stays on the clipboard")));
    ASSERT_TRUE(rig.passMoment(TextInserter::pasteDelaySec + TextInserter::restoreDelaySec + 0.3));

    EXPECT_EQ(rig.clipboard->text(), "stays on the clipboard");
    EXPECT_GT(rig.clipboard->changeCount(), before);
    peer.send("read-clipboard");
    const auto seen = peer.waitFor("clipboard", 10);
    ASSERT_TRUE(seen);
    EXPECT_EQ((*seen)["text"], "stays on the clipboard");
}

TEST(TextInsertionOnX11, WithThePasteImpossibleTheTextStaysForTheUser) {
    DesktopRig rig;
    ClipboardOwnerProcess owner({{"text/plain", "lost, as the user was told"}});
    PeerProcess peer({.title = "Sign in", .password = true});
    peer.activate();

    ASSERT_TRUE(waitUntil([&] { return rig.secure->isActive(); }, 10.0))
        << "the focused password field was never seen";
    EXPECT_FALSE(rig.inserter.insert("not for a password field"));
    ASSERT_TRUE(rig.passMoment(TextInserter::pasteDelaySec + TextInserter::restoreDelaySec + 0.3));

    EXPECT_EQ(rig.clipboard->text(), "not for a password field");
    peer.send("read-clipboard");
    const auto seen = peer.waitFor("clipboard", 10);
    ASSERT_TRUE(seen);
    EXPECT_EQ((*seen)["text"], "not for a password field");
    // Clipboard managers are told not to keep a dictation.
    EXPECT_THAT((*seen)["targets"], Contains("x-kde-passwordManagerHint"));
    peer.send("quit");
    const auto exit = peer.waitFor("exit", 10);
    ASSERT_TRUE(exit);
    EXPECT_EQ((*exit)["text"], "") << "nothing reached the password field";
}

TEST(TextInsertionOnX11, EachApplicationGetsItsOwnPasteKeys) {
    using Chord = PasteChord;
    const std::pair<const char*, Chord> table[] = {
        {"gedit", Chord::ctrlV},
        {"Firefox", Chord::ctrlV},
        {"kitty", Chord::ctrlShiftV},
        {"Gnome-terminal", Chord::ctrlShiftV},
        {"XTerm", Chord::shiftInsertPrimary},
        {"Emacs", Chord::shiftInsertPrimary},  // Ctrl+V scrolls a page there
        {"Gvim", Chord::shiftInsertPrimary},   // and starts a block selection here
    };
    for (const auto& [wmClass, chord] : table) {
        EXPECT_EQ(pasteChordFor(wmClass), chord) << wmClass;
    }
}

TEST(TextInsertionOnX11, TerminalsGetCtrlShiftV) {
    DesktopRig rig;
    PeerProcess peer({.title = "Terminal look-alike", .wmClass = "kitty"});
    peer.activate();
    ASSERT_TRUE(rig.inserter.insert("ls -la"));
    const auto key = peer.waitFor("key", 10, [](const auto& e) { return e["name"] == "v"; });
    ASSERT_TRUE(key);
    EXPECT_TRUE((*key)["ctrl"]);
    EXPECT_TRUE((*key)["shift"]);
}

}  // namespace
}  // namespace tevra
