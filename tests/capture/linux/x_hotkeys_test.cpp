// The hotkey monitors on a real X server (Xvfb under scripts/test-env), driven
// by xdotool as a user's keyboard would drive them.
#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "base/virtual_main_queue.h"
#include "capture/fn_hotkey_monitor.h"
#include "capture/hotkey_monitor.h"
#include "capture/linux/x11_key_injector.h"
#include "capture/linux/x_keyboard.h"
#include "capture/linux/x_test_client.h"
#include "support/recording_hotkey_calls.h"

namespace tevra {
namespace {

using testing::waitUntil;
using testing::xdotool;
using testing::XTestClient;
using Calls = std::vector<std::string>;

class XHotkeysTest : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string missing = testing::missingForXTests();
        ASSERT_TRUE(missing.empty()) << missing;
        ASSERT_TRUE(window.connected()) << "cannot open the X display " << std::getenv("DISPLAY");
        ASSERT_TRUE(window.showFocusedWindow()) << "the test window never got the focus";
    }
    void TearDown() override {
        // Leave no key down, no lock on and the plain layout for the next test,
        // whatever failed.
        xdotool("keyup Control_R Control_L Alt_L 1 2 3 a c");
        std::system("setxkbmap -layout us -option ''");
    }

    LogLine logger() {
        return [this](const std::string& line) { log.push_back(line); };
    }
    std::unique_ptr<XKeyboard> keyboard(std::string talkKey = "Control_R") {
        return std::make_unique<XKeyboard>(queue, std::move(talkKey), logger(), std::string(),
                                           ownGrabs, syntheticKeys);
    }
    std::shared_ptr<FnHotkeyMonitor> fnMonitor(std::string talkKey = "Control_R") {
        auto monitor = std::make_shared<FnHotkeyMonitor>(queue, keyboard(std::move(talkKey)));
        recorder.wire(*monitor);
        return monitor;
    }
    std::shared_ptr<HotkeyMonitor> altMonitor(int slotCount) {
        auto monitor = std::make_shared<HotkeyMonitor>(queue, keyboard(), slotCount, logger());
        recorder.wire(*monitor);
        return monitor;
    }
    bool said(size_t count) {
        return waitUntil(queue, [&] { return calls.size() >= count; });
    }
    bool talkKeyHeld(const FnHotkeyMonitor& monitor, bool held) {
        return waitUntil(queue, [&] { return monitor.gestureMachine().isFnHeld() == held; });
    }
    bool logged(const std::string& line) const {
        return std::find(log.begin(), log.end(), line) != log.end();
    }

    VirtualMainQueue queue;
    std::shared_ptr<XOwnGrabs> ownGrabs = std::make_shared<XOwnGrabs>();
    std::shared_ptr<XSyntheticKeys> syntheticKeys = std::make_shared<XSyntheticKeys>();
    XTestClient window;
    testing::RecordingHotkeyCalls recorder;
    Calls& calls = recorder.calls;
    std::vector<std::string> log;
};

TEST_F(XHotkeysTest, TalkKeyTapAndHoldReachTheCallbacksAndTheKeyStillReachesTheWindow) {
    // A talk key that is no key's name cannot be watched, and says so.
    auto unknown = std::make_shared<FnHotkeyMonitor>(queue, keyboard("NoSuchKey"));
    EXPECT_EQ(unknown->start(), std::nullopt);
    EXPECT_EQ(unknown->unavailableReason(),
              "\"NoSuchKey\" is not the name of a key (xev shows the names)");
    EXPECT_TRUE(logged("talk key unavailable: " + unknown->unavailableReason()));

    auto monitor = fnMonitor();
    ASSERT_EQ(monitor->start(), "fn-tap");

    // A tap starts a capture at the release.
    ASSERT_TRUE(xdotool("keydown Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, true));
    ASSERT_TRUE(xdotool("keyup Control_R"));
    ASSERT_TRUE(said(1));
    EXPECT_EQ(calls, Calls{"start 0"});

    // Held while the capture runs: the leader window running out finishes it.
    ASSERT_TRUE(xdotool("keydown Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, true));
    queue.advance(0.25);
    EXPECT_EQ(calls, (Calls{"start 0", "finish"}));
    ASSERT_TRUE(xdotool("keyup Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, false));

    // Hold-to-talk from idle, timed by the X server: the leader timer of the
    // test's virtual clock never fires, yet the hold is a hold.
    ASSERT_TRUE(xdotool("keydown Control_R sleep 0.45 keyup Control_R"));
    ASSERT_TRUE(said(4));
    EXPECT_EQ(calls, (Calls{"start 0", "finish", "start 0", "finish"}));

    ASSERT_TRUE(xdotool("key x"));
    ASSERT_TRUE(window.waitForPress(XK_x));
    EXPECT_EQ(window.presses(XK_Control_R), 3) << "the talk key is never taken";
    EXPECT_EQ(window.releases(XK_Control_R), 3);
    monitor->stop();
}

TEST_F(XHotkeysTest, ChordsGoToTevraWhileTypingWithTheTalkKeyUpReachesTheWindow) {
    auto monitor = fnMonitor();
    ASSERT_EQ(monitor->start(), "fn-tap");

    ASSERT_TRUE(xdotool("keydown Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, true));
    ASSERT_TRUE(xdotool("key 2"));
    ASSERT_TRUE(said(1));
    ASSERT_TRUE(xdotool("key period"));  // any chord key ends the capture
    ASSERT_TRUE(said(2));
    ASSERT_TRUE(xdotool("key q"));  // not a chord: passes
    ASSERT_TRUE(window.waitForPress(XK_q));
    ASSERT_TRUE(xdotool("keyup Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, false));
    EXPECT_EQ(calls, (Calls{"start 2", "finish"}));

    ASSERT_TRUE(xdotool("key 1 2 period comma x"));
    ASSERT_TRUE(window.waitForPress(XK_x));
    EXPECT_EQ(window.presses(XK_2), 1) << "only the 2 typed with the talk key up";
    EXPECT_EQ(window.releases(XK_2), 1);
    EXPECT_EQ(window.presses(XK_period), 1);
    EXPECT_EQ(window.presses(XK_1), 1);
    EXPECT_EQ(window.presses(XK_comma), 1);
    EXPECT_EQ(calls.size(), 2u);

    // Esc is taken only while a capture runs.
    ASSERT_TRUE(xdotool("key Control_R"));
    ASSERT_TRUE(said(3));
    monitor->enableCancelKey();
    ASSERT_TRUE(xdotool("key Escape"));
    ASSERT_TRUE(said(4));
    EXPECT_EQ(calls.back(), "cancel");
    monitor->disableCancelKey();
    ASSERT_TRUE(xdotool("key Escape"));
    ASSERT_TRUE(window.waitForPress(XK_Escape));
    EXPECT_EQ(window.presses(XK_Escape), 1);
    EXPECT_EQ(calls.size(), 4u);
    monitor->stop();
}

TEST_F(XHotkeysTest, TheUsersOwnTalkKeyShortcutsStartNothingAndReachTheWindow) {
    auto monitor = fnMonitor();
    ASSERT_EQ(monitor->start(), "fn-tap");
    ASSERT_TRUE(xdotool("keydown Control_R key c keyup Control_R"));
    ASSERT_TRUE(window.waitForPress(XK_c));
    ASSERT_TRUE(talkKeyHeld(*monitor, false));
    queue.advance(1);
    EXPECT_EQ(calls, Calls{}) << "Control_R+C is a copy, not a tap";
    monitor->stop();
}

TEST_F(XHotkeysTest, ATalkKeyThatALayoutOptionTookFailsAndSaysWhy) {
    ASSERT_EQ(std::system("setxkbmap -option compose:rctrl"), 0);
    auto monitor = fnMonitor();
    EXPECT_EQ(monitor->start(), std::nullopt);
    EXPECT_EQ(monitor->unavailableReason(),
              "no key of this keyboard gives \"Control_R\" (a layout option such as "
              "compose:rctrl or grp:rctrl_toggle may have taken it)");
}

TEST_F(XHotkeysTest, KeysHeldThroughAGrabAreForgottenWhenTheGrabEnds) {
    auto monitor = fnMonitor();
    ASSERT_EQ(monitor->start(), "fn-tap");
    // The a goes down while the 1's grab holds the keyboard, and comes up
    // after it: its release goes to the window, never to Tevra.
    ASSERT_TRUE(xdotool("keydown Control_R keydown 1"));
    ASSERT_TRUE(said(1));
    ASSERT_TRUE(waitUntil(queue, [&] { return ownGrabs->active(); }));
    ASSERT_TRUE(xdotool("keydown a keyup 1 keyup a keyup Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, false));
    EXPECT_FALSE(ownGrabs->active()) << "a stuck count hides every later password prompt";
    monitor->stop();
}

TEST_F(XHotkeysTest, TevrasOwnPasteIsNotTheTalkKey) {
    // With the talk key on the left Ctrl, the paste's Ctrl must not tap it.
    auto monitor = fnMonitor("Control_L");
    ASSERT_EQ(monitor->start(), "fn-tap");
    auto x = X11Connection::open();
    ASSERT_TRUE(x);
    X11KeyInjector injector(x, syntheticKeys);
    const auto chord = injector.pasteSequence();
    ASSERT_TRUE(chord);
    injector.post(*chord);
    ASSERT_TRUE(window.waitForPress(XK_v));
    queue.advance(1);
    EXPECT_EQ(calls, Calls{});

    // The user's own Ctrl still is the talk key.
    ASSERT_TRUE(xdotool("key Control_L"));
    ASSERT_TRUE(said(1));
    EXPECT_EQ(calls, Calls{"start 0"});
    monitor->stop();
}

// The locks and the layouts of real keyboards: the chords and the Alt keys
// work whatever is on, and whatever symbol the digit keys give unshifted.
TEST_F(XHotkeysTest, BothSchemesWorkWithLocksOnAndOnGermanAndFrenchLayouts) {
    struct Setup {
        const char* name;
        const char* command;  // made before, undone by TearDown
        const char* keyTwo;   // the unshifted symbol of the key that carries 2
    };
    const Setup setups[] = {
        {"NumLock", "xdotool key Num_Lock", "2"},
        {"CapsLock", "xdotool key Caps_Lock", "2"},
        {"German", "setxkbmap de", "2"},
        {"French", "setxkbmap fr", "eacute"},
    };
    for (const Setup& setup : setups) {
        SCOPED_TRACE(setup.name);
        ASSERT_EQ(std::system(setup.command), 0);
        const std::string two = setup.keyTwo;
        {
            auto monitor = fnMonitor();
            ASSERT_EQ(monitor->start(), "fn-tap");
            ASSERT_TRUE(xdotool("keydown Control_R key " + two + " keyup Control_R"));
            ASSERT_TRUE(said(1));
            EXPECT_EQ(calls.back(), "start 2");
            monitor->stop();
        }
        {
            auto monitor = altMonitor(3);
            ASSERT_EQ(monitor->start(), "hotkey");
            ASSERT_TRUE(xdotool("keydown Alt_L key " + two + " keyup Alt_L"));
            ASSERT_TRUE(said(2));
            EXPECT_EQ(calls.back(), "finish") << "Alt+2 ends the capture the chord began";
            monitor->stop();
        }
        calls.clear();
        recorder.capturing = false;
        xdotool(std::string("key ") + (setup.name == std::string("NumLock")    ? "Num_Lock"
                                       : setup.name == std::string("CapsLock") ? "Caps_Lock"
                                                                               : "shift"));
        std::system("setxkbmap -layout us -option ''");
    }
}

TEST_F(XHotkeysTest, AChordKeyReleasedAfterTheTalkKeyIsSwallowedWithItsPress) {
    auto monitor = fnMonitor();
    ASSERT_EQ(monitor->start(), "fn-tap");

    ASSERT_TRUE(xdotool("keydown Control_R"));
    ASSERT_TRUE(talkKeyHeld(*monitor, true));
    ASSERT_TRUE(xdotool("keydown 3"));
    ASSERT_TRUE(said(1));
    // The 3 is held, so the talk key's release comes through Tevra's grab.
    ASSERT_TRUE(xdotool("sleep 0.45 keyup Control_R"));
    ASSERT_TRUE(said(2));
    ASSERT_TRUE(xdotool("keyup 3"));
    ASSERT_TRUE(xdotool("key x"));
    ASSERT_TRUE(window.waitForPress(XK_x));

    EXPECT_EQ(calls, (Calls{"start 3", "finish"}));
    EXPECT_EQ(window.presses(XK_3), 0);
    EXPECT_EQ(window.releases(XK_3), 0);
    EXPECT_FALSE(monitor->gestureMachine().isFnHeld());
    monitor->stop();
}

TEST_F(XHotkeysTest, AltSchemeWorksAroundASlotKeyAnotherClientHolds) {
    XTestClient other;
    ASSERT_TRUE(other.grabKey(XK_2, Mod1Mask));
    auto monitor = altMonitor(3);
    ASSERT_EQ(monitor->start(), "hotkey");
    EXPECT_TRUE(logged("hotkey ⌥2 is held by another program"));
    EXPECT_EQ(monitor->keysHeldElsewhere(), std::vector<std::string>{"Alt+2"});
    EXPECT_TRUE(logged("hotkeys registered: ⌥1…⌥3 + ⌥7 select + ⌥8/⌥9/⌥0 translate"));

    ASSERT_TRUE(xdotool("key alt+1"));
    ASSERT_TRUE(said(1));
    ASSERT_TRUE(xdotool("key alt+2"));
    ASSERT_TRUE(other.waitForPress(XK_2));
    ASSERT_TRUE(xdotool("key alt+3"));
    ASSERT_TRUE(said(2));
    ASSERT_TRUE(xdotool("key alt+7"));
    ASSERT_TRUE(said(3));
    EXPECT_EQ(calls, (Calls{"start 0", "finish", "select"}));

    monitor->stop();
    ASSERT_TRUE(xdotool("key alt+1 x"));
    ASSERT_TRUE(window.waitForPress(XK_x));
    EXPECT_EQ(window.presses(XK_1), 1) << "a stopped monitor gives its keys back";
}

TEST_F(XHotkeysTest, AltSchemeFailsWhenNoSlotKeyCanBeHadAndKeepsNothing) {
    XTestClient other;
    ASSERT_TRUE(other.grabKey(XK_1, Mod1Mask));
    auto monitor = altMonitor(1);
    EXPECT_EQ(monitor->start(), std::nullopt);
    EXPECT_TRUE(logged("hotkeys registered: ⌥1…⌥1 + ⌥7 select + ⌥8/⌥9/⌥0 translate"));

    XTestClient third;
    EXPECT_TRUE(third.grabKey(XK_7, Mod1Mask)) << "the failed start gave back Alt+7";
}

TEST_F(XHotkeysTest, AHeldKeyIsOnePressAndOneReleaseWhateverTheAutoRepeat) {
    std::vector<DesktopKeyboard::Event> events;
    auto board = keyboard();
    ASSERT_TRUE(board->open([&](const DesktopKeyboard::Event& event) {
        if (event.keysym == XK_1) {
            events.push_back(event);
        }
    }));
    ASSERT_TRUE(board->grab(XK_1, DesktopKeyboard::Modifiers::alt));
    window.setAutoRepeat(60, 20);

    ASSERT_TRUE(xdotool("keydown alt+1"));
    ASSERT_TRUE(waitUntil(queue, [&] { return events.size() >= 3; }));
    ASSERT_TRUE(xdotool("keyup 1 Alt_L"));
    using Kind = DesktopKeyboard::Event::Kind;
    ASSERT_TRUE(waitUntil(queue, [&] { return events.back().kind == Kind::keyUp; }));

    EXPECT_FALSE(events.front().repeat);
    for (size_t i = 1; i + 1 < events.size(); ++i) {
        EXPECT_EQ(events[i].kind, Kind::keyDown) << "no release while the key is down";
        EXPECT_TRUE(events[i].repeat);
    }
    board->close();
}

TEST(XHotkeysWithoutDisplay, StartFailsAndSaysWhy) {
    VirtualMainQueue queue;
    std::vector<std::string> log;
    auto monitor = std::make_shared<FnHotkeyMonitor>(
        queue,
        std::make_unique<XKeyboard>(
            queue, "Control_R", [&](const std::string& line) { log.push_back(line); }, ":4711"));
    EXPECT_EQ(monitor->start(), std::nullopt);
    EXPECT_EQ(log,
              std::vector<std::string>{"keyboard unavailable: cannot open X display \":4711\""});
}

}  // namespace
}  // namespace tevra
