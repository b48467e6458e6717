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
using Verdict = FnHotkeyMonitor::Verdict;

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
    Verdict talk(bool down) {
        return monitor->handle({down ? Kind::talkKeyDown : Kind::talkKeyUp, controlR});
    }
    Verdict press(uint32_t keysym, bool repeat = false) {
        return monitor->handle({Kind::keyDown, keysym, repeat});
    }
    Verdict release(uint32_t keysym) { return monitor->handle({Kind::keyUp, keysym}); }
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

    auto other = std::make_unique<RecordingDesktopKeyboard>();
    other->inputControl = false;
    auto* otherKeyboard = other.get();
    auto second = std::make_shared<FnHotkeyMonitor>(queue, std::move(other));
    EXPECT_EQ(second->start(), std::nullopt);
    EXPECT_FALSE(otherKeyboard->isOpen) << "a monitor that cannot run lets go of the display";
}

TEST_F(FnHotkeyMonitorTest, TapTogglesAndHoldStartsWithTheLeaderAndFinishesOnALateRelease) {
    started();
    EXPECT_EQ(talk(true), Verdict::pass);
    queue.advance(0.1);
    EXPECT_EQ(talk(false), Verdict::pass) << "the talk key always reaches the application";
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
    EXPECT_EQ(press(key2), Verdict::swallow);
    EXPECT_EQ(said(), Calls{"start 2"});
    EXPECT_FALSE(monitor->isLeaderArmed());
    queue.advance(1);
    EXPECT_EQ(said(), Calls{}) << "a struck chord cancels the leader";
    EXPECT_EQ(release(key2), Verdict::swallow);
    EXPECT_EQ(said(), Calls{"finish"});
    EXPECT_EQ(talk(false), Verdict::pass);
    EXPECT_EQ(said(), Calls{});
}

TEST_F(FnHotkeyMonitorTest, ChordKeyReleasedAfterTheTalkKeyIsStillSwallowed) {
    started();
    talk(true);
    press(key1);
    queue.advance(1);
    EXPECT_EQ(talk(false), Verdict::pass);
    EXPECT_EQ(said(), (Calls{"start 1", "finish"}));
    EXPECT_EQ(release(key1), Verdict::swallow) << "the application never sees a lone release";
    EXPECT_EQ(said(), Calls{});
    EXPECT_EQ(release(key1), Verdict::pass) << "one release per swallowed press";
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
        EXPECT_EQ(press(key), Verdict::swallow);
        // A further chord key in the same press does nothing, yet is swallowed.
        EXPECT_EQ(press(key1), Verdict::swallow);
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

TEST_F(FnHotkeyMonitorTest, KeysThatAreNotChordsPassUntouched) {
    started();
    // Typing with the talk key up.
    for (uint32_t key : {keyQ, key1, KeySyms::period, KeySyms::escape}) {
        EXPECT_EQ(press(key), Verdict::pass);
        EXPECT_EQ(release(key), Verdict::pass);
    }
    EXPECT_EQ(said(), Calls{});

    // Talk key + Q: Q passes and the leader stays armed.
    talk(true);
    EXPECT_EQ(press(keyQ), Verdict::pass);
    EXPECT_EQ(release(keyQ), Verdict::pass);
    EXPECT_TRUE(monitor->isLeaderArmed());
    queue.advance(0.25);
    EXPECT_EQ(said(), Calls{"start 0"});
}

TEST_F(FnHotkeyMonitorTest, AKeyDownBeforeTheTalkKeyKeepsItsReleaseAndARepeatedChordFinishes) {
    started();
    EXPECT_EQ(press(key1), Verdict::pass);
    talk(true);
    EXPECT_EQ(release(key1), Verdict::pass);
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
    EXPECT_EQ(press(key1, true), Verdict::swallow) << "the keyboard's auto-repeat";
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
    EXPECT_EQ(press(KeySyms::escape), Verdict::pass);
    talk(true);
    EXPECT_EQ(press(KeySyms::escape), Verdict::pass);
    talk(false);
    EXPECT_EQ(said(), Calls{"start 0"});

    // During the capture, with the talk key held: cancel, and the machine is
    // not told, so the release finds no capture and counts as a new tap.
    talk(true);
    EXPECT_EQ(press(KeySyms::escape), Verdict::swallow);
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
    EXPECT_EQ(release(key1), Verdict::pass);
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
