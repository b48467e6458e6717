#include "capture/fn_hotkey_monitor.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/virtual_main_queue.h"
#include "capture/key_symbols.h"
#include "support/recording_desktop_keyboard.h"
#include "support/recording_hotkey_calls.h"

namespace tevra {
namespace {

using testing::RecordingDesktopKeyboard;
using Calls = std::vector<std::string>;
using Kind = DesktopKeyboard::Event::Kind;
using Modifiers = DesktopKeyboard::Modifiers;

constexpr uint32_t controlR = 0xffe4;
constexpr uint32_t keyQ = 0x71;
const uint32_t key1 = KeySyms::digit(1);
const uint32_t key2 = KeySyms::digit(2);

// Drives the monitor as the desktop would, with the orchestrator's callbacks.
class FnHotkeyMonitorTest : public ::testing::Test {
protected:
    FnHotkeyMonitorTest() {
        auto owned = std::make_unique<RecordingDesktopKeyboard>();
        keyboard = owned.get();
        monitor = std::make_shared<FnHotkeyMonitor>(queue, std::move(owned));
        recorder.wire(*monitor);
    }

    void started() { ASSERT_EQ(monitor->start(), "fn-tap"); }
    // Events carry the desktop's time: here the virtual clock's.
    void talk(bool down) {
        monitor->handle({down ? Kind::talkKeyDown : Kind::talkKeyUp, controlR, false, queue.now()});
    }
    void press(uint32_t keysym, bool repeat = false) {
        monitor->handle({Kind::keyDown, keysym, repeat, queue.now()});
    }
    void release(uint32_t keysym) { monitor->handle({Kind::keyUp, keysym, false, queue.now()}); }
    void shortcutKey(uint32_t keysym) {
        monitor->handle({Kind::otherKeyDown, keysym, false, queue.now()});
    }
    // What the callbacks said since the last look.
    Calls said() { return recorder.take(); }

    VirtualMainQueue queue;
    RecordingDesktopKeyboard* keyboard = nullptr;
    std::shared_ptr<FnHotkeyMonitor> monitor;
    testing::RecordingHotkeyCalls recorder;
    bool& capturing = recorder.capturing;
};

TEST_F(FnHotkeyMonitorTest, StartWatchesTheTalkKeyWithTheTwelveChordKeysOrFails) {
    started();
    const std::vector<uint32_t> chords = {'1', '2', '3', '4', '5', '6',
                                          '7', '8', '9', '0', '.', ','};
    EXPECT_EQ(keyboard->watchedChordKeys, chords);
    EXPECT_TRUE(keyboard->grabs.empty()) << "nothing is taken before the talk key goes down";

    for (const bool inputControl : {false, true}) {
        auto other = std::make_unique<RecordingDesktopKeyboard>();
        other->inputControl = inputControl;
        other->talkKeyProblem = "no key of this keyboard gives \"Control_R\"";
        auto* otherKeyboard = other.get();
        auto second = std::make_shared<FnHotkeyMonitor>(queue, std::move(other));
        EXPECT_EQ(second->start(), std::nullopt);
        EXPECT_FALSE(otherKeyboard->isOpen) << "a monitor that cannot run lets go of the display";
        // Only a talk key that cannot be used is a reason waiting will not fix.
        EXPECT_EQ(second->unavailableReason(), inputControl ? otherKeyboard->talkKeyProblem : "");
    }
}

TEST_F(FnHotkeyMonitorTest, TapTogglesAndHoldStartsWithTheLeaderAndFinishesOnALateRelease) {
    started();
    talk(true);
    queue.advance(0.1);
    talk(false);
    talk(true);
    queue.advance(0.1);
    talk(false);
    queue.advance(5);
    EXPECT_EQ(said(), (Calls{"start 0", "finish"})) << "the leader was cancelled at each release";

    talk(true);
    EXPECT_TRUE(monitor->isLeaderArmed());
    queue.advance(0.2);
    // The keyboard repeating the talk key does not start the press over.
    talk(true);
    queue.advance(0.05);
    EXPECT_EQ(said(), Calls{"start 0"});
    EXPECT_FALSE(monitor->isLeaderArmed());
    queue.advance(0.2);
    talk(false);
    EXPECT_EQ(said(), Calls{"finish"}) << "released 0.45 s after the press: hold-to-talk";
}

TEST_F(FnHotkeyMonitorTest, ChordStartsAtOnceIsSwallowedAndItsFirstReleaseDecides) {
    started();
    talk(true);
    press(key2);
    EXPECT_EQ(said(), Calls{"start 2"});
    EXPECT_FALSE(monitor->isLeaderArmed());
    queue.advance(1);
    EXPECT_EQ(said(), Calls{}) << "a struck chord cancels the leader";
    release(key2);
    EXPECT_EQ(said(), Calls{"finish"});
    talk(false);
    EXPECT_EQ(said(), Calls{});
}

TEST_F(FnHotkeyMonitorTest, ChordKeyReleasedAfterTheTalkKeyIsStillSwallowed) {
    started();
    talk(true);
    press(key1);
    queue.advance(1);
    talk(false);
    EXPECT_EQ(said(), (Calls{"start 1", "finish"}));
    release(key1);
    EXPECT_EQ(said(), Calls{});
    release(key1);
}

TEST_F(FnHotkeyMonitorTest, MomentaryChordsFireOnceAtThePressAndTranslateStartsLikeASlot) {
    started();
    const std::vector<std::pair<uint32_t, std::string>> momentary = {
        {KeySyms::digit(6), "select"},
        {KeySyms::digit(7), "translate selection"},
        {KeySyms::digit(8), "translate clipboard"},
        {KeySyms::digit(0), "clip stack"},
        {KeySyms::period, "clip paste"},
        {KeySyms::comma, "clip mode"},
    };
    for (const auto& [key, call] : momentary) {
        talk(true);
        press(key);
        // A further chord key in the same press does nothing, yet is swallowed.
        press(key1);
        release(key1);
        release(key);
        talk(false);
        EXPECT_EQ(said(), Calls{call}) << call;
    }
    EXPECT_FALSE(capturing);

    // With a capture running, any chord key finishes it instead.
    talk(true);
    queue.advance(0.1);
    talk(false);
    talk(true);
    press(KeySyms::digit(6));
    talk(false);
    EXPECT_EQ(said(), (Calls{"start 0", "finish"}));

    // The translating chord's finish comes through the one finish callback.
    talk(true);
    press(KeySyms::digit(9));
    queue.advance(0.5);
    release(KeySyms::digit(9));
    talk(false);
    EXPECT_EQ(said(), (Calls{"translate start", "finish"}));
}

TEST_F(FnHotkeyMonitorTest, AnyOtherKeyMakesThePressTheUsersOwnShortcut) {
    started();
    // Typing with the talk key up concerns nobody.
    for (uint32_t key : {keyQ, key1, KeySyms::period, KeySyms::escape}) {
        press(key);
        release(key);
    }
    // Talk key + C released at once: a shortcut, not a tap.
    talk(true);
    shortcutKey(keyQ);
    EXPECT_FALSE(monitor->isLeaderArmed());
    queue.advance(0.1);
    talk(false);
    queue.advance(1);
    EXPECT_EQ(said(), Calls{});

    // Held past the leader window first: the dictation it started is dropped.
    talk(true);
    queue.advance(0.3);
    shortcutKey(keyQ);
    talk(false);
    EXPECT_EQ(said(), (Calls{"start 0", "cancel"}));

    // A latched capture goes on through the user's shortcut.
    talk(true);
    talk(false);
    talk(true);
    shortcutKey(keyQ);
    queue.advance(1);
    talk(false);
    EXPECT_EQ(said(), Calls{"start 0"});
    EXPECT_TRUE(capturing);
}

TEST_F(FnHotkeyMonitorTest, HoldAndTapAreTimedByTheDesktopNotByWhenTheEventIsHandled) {
    started();
    // Both events waited in the queue while the main thread was busy: the
    // leader timer never had its turn, but the key was held for half a second.
    monitor->handle({Kind::talkKeyDown, controlR, false, 10.0});
    monitor->handle({Kind::talkKeyUp, controlR, false, 10.5});
    EXPECT_EQ(said(), (Calls{"start 0", "finish"}));
    EXPECT_FALSE(monitor->isLeaderArmed());

    monitor->handle({Kind::talkKeyDown, controlR, false, 20.0});
    queue.advance(5);  // late, but the press still counts from the desktop's time
    monitor->handle({Kind::talkKeyUp, controlR, false, 20.3});
    EXPECT_EQ(said(), Calls{"start 0"}) << "released 0.3 s after the press: latched";
}

TEST_F(FnHotkeyMonitorTest, AKeyDownBeforeTheTalkKeyKeepsItsReleaseAndARepeatedChordFinishes) {
    started();
    press(key1);
    talk(true);
    release(key1);
    queue.advance(0.1);
    talk(false);
    EXPECT_EQ(said(), Calls{"start 0"}) << "the machine never heard of the 1";

    talk(true);
    press(key1);  // finishes the capture the tap started
    release(key1);
    talk(false);
    talk(true);
    press(key1);
    queue.advance(0.5);
    press(key1, true);
    EXPECT_EQ(said(), (Calls{"finish", "start 1", "finish"}));
}

TEST_F(FnHotkeyMonitorTest, EscCancelsOnlyDuringACaptureAndIsHeldOnlyThen) {
    started();
    monitor->enableCancelKey();
    EXPECT_TRUE(keyboard->holds(KeySyms::escape, Modifiers::none));
    EXPECT_TRUE(keyboard->holds(KeySyms::escape, Modifiers::talkKey));
    monitor->disableCancelKey();
    EXPECT_TRUE(keyboard->grabs.empty());

    // No capture: Esc passes, with or without the talk key.
    press(KeySyms::escape);
    talk(true);
    press(KeySyms::escape);
    talk(false);
    EXPECT_EQ(said(), Calls{"start 0"});

    // During the capture, with the talk key held: cancel, and the machine is
    // not told, so the release finds no capture and counts as a new tap.
    talk(true);
    press(KeySyms::escape);
    EXPECT_EQ(said(), Calls{"cancel"});
    queue.advance(0.1);
    talk(false);
    EXPECT_EQ(said(), Calls{"start 0"});
}

TEST_F(FnHotkeyMonitorTest, StopLetsGoOfEverythingAndLaterEventsDoNothing) {
    started();
    monitor->enableCancelKey();
    talk(true);
    press(key1);
    monitor->stop();
    EXPECT_FALSE(keyboard->isOpen);
    EXPECT_FALSE(monitor->gestureMachine().isFnHeld());
    EXPECT_FALSE(monitor->isLeaderArmed());
    release(key1);
    talk(true);
    queue.advance(1);
    EXPECT_EQ(said(), Calls{"start 1"});
}

TEST_F(FnHotkeyMonitorTest, EventsReachTheMonitorThroughTheKeyboardAndTimersHoldItWeakly) {
    started();
    keyboard->deliver({Kind::talkKeyDown, controlR});
    keyboard->deliver({Kind::keyDown, key2});
    EXPECT_EQ(said(), Calls{"start 2"});

    keyboard->deliver({Kind::keyUp, key2});
    keyboard->deliver({Kind::talkKeyUp, controlR});
    keyboard->deliver({Kind::talkKeyDown, controlR});
    std::weak_ptr<FnHotkeyMonitor> watch = monitor;
    monitor.reset();  // with the leader armed
    EXPECT_TRUE(watch.expired());
    queue.advance(1);
    EXPECT_EQ(said(), Calls{});
}

}  // namespace
}  // namespace tevra
