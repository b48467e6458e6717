#include "capture/fn_gesture_machine.h"

#include <gtest/gtest.h>

#include <ostream>

namespace tevra {

void PrintTo(const FnIntent& intent, std::ostream* os) {
    *os << "FnIntent(" << static_cast<int>(intent.kind()) << ", " << intent.slotNumber() << ")";
}

namespace {

using Intents = std::vector<FnIntent>;
const Intents nothing;
const Intents finish{FnIntent::finish()};
const Intents startPlain{FnIntent::startSlot(0)};

class FnGestureMachineTest : public ::testing::Test {
protected:
    FnGestureMachineTest() {
        machine.isCapturing = [this] { return capturing; };
    }
    FnGestureMachine machine{0.4, 0.25};
    bool capturing = false;
};

TEST(FnHotkeyMap, MapsTheTwelveChordKeysToActionsAndSlotsToKeysAndLabels) {
    using FnHotkeyMap::action;
    EXPECT_EQ(action(22), FnAction::select());
    EXPECT_EQ(action(26), FnAction::translateSelection());
    EXPECT_EQ(action(28), FnAction::translateClipboard());
    EXPECT_EQ(action(25), FnAction::dictateTranslate());
    EXPECT_EQ(action(47), FnAction::clipPaste());
    EXPECT_EQ(action(43), FnAction::clipMode());
    EXPECT_EQ(action(29), FnAction::clipStack());
    for (int slot = 1; slot <= 5; ++slot) {
        EXPECT_EQ(action(FnHotkeyMap::keyCode(slot).value()), FnAction::slot(slot));
    }
    for (uint32_t unmapped : {0u, 24u, 27u, 53u, 0xFFFFFFFFu}) {
        EXPECT_EQ(action(unmapped), std::nullopt) << unmapped;
    }
    EXPECT_EQ(FnHotkeyMap::keyCode(1), 18u);
    EXPECT_EQ(FnHotkeyMap::keyCode(5), 23u);
    for (int noKey : {-1, 0, 6, 10}) {
        EXPECT_EQ(FnHotkeyMap::keyCode(noKey), std::nullopt) << noKey;
    }
    EXPECT_EQ(FnHotkeyMap::label(0), "Fn");
    EXPECT_EQ(FnHotkeyMap::label(12), "Fn 12");
    EXPECT_EQ(hotkeyLabel(Mode{.slot = 3, .name = "Formal"}), "Fn 3");

    // Momentary actions fire at the press; capture actions start one.
    EXPECT_EQ(FnAction::select().momentaryIntent(), FnIntent::selectTool());
    EXPECT_EQ(FnAction::clipMode().momentaryIntent(), FnIntent::clipMode());
    EXPECT_EQ(FnAction::select().startIntent(), std::nullopt);
    EXPECT_FALSE(FnAction::slot(2).isMomentary());
    EXPECT_EQ(FnAction::slot(2).startIntent(), FnIntent::startSlot(2));
    EXPECT_EQ(FnAction::dictateTranslate().startIntent(), FnIntent::startDictateTranslate());
    EXPECT_EQ(FnAction::dictateTranslate().momentaryIntent(), std::nullopt);
}

TEST_F(FnGestureMachineTest, AFreshMachineIgnoresEverythingButAPress) {
    FnGestureMachine plain(0.4, 0.25);  // default callback: never capturing
    EXPECT_EQ(plain.digitPressed(FnAction::slot(1), 1.0), nothing);
    EXPECT_EQ(plain.fnReleased(1.0), nothing);
    EXPECT_EQ(plain.leaderElapsed(1.0), nothing);
    EXPECT_FALSE(plain.isFnHeld());
    EXPECT_EQ(plain.leaderWindow(), 0.25);
    plain.fnPressed(2.0);
    EXPECT_EQ(plain.fnReleased(2.1), startPlain);

    machine.isCapturing = nullptr;  // a cleared callback counts as not capturing
    machine.fnPressed(0.0);
    EXPECT_EQ(machine.fnReleased(0.1), startPlain);
}

TEST_F(FnGestureMachineTest, TapTogglesACapture) {
    EXPECT_EQ(machine.fnPressed(5.0), nothing);
    EXPECT_TRUE(machine.isFnHeld());
    EXPECT_EQ(machine.fnReleased(5.1), startPlain);
    EXPECT_EQ(machine.fnReleased(5.2), nothing);  // a stray key-up

    capturing = true;
    machine.fnPressed(6.0);
    EXPECT_EQ(machine.fnReleased(6.1), finish);
    EXPECT_EQ(machine.leaderElapsed(6.25), nothing);  // the timer firing late
}

TEST_F(FnGestureMachineTest, HoldIsMeasuredFromTheTalkKeyGoingDown) {
    machine.fnPressed(10.0);
    EXPECT_EQ(machine.leaderElapsed(10.25), startPlain);
    EXPECT_TRUE(machine.isChordResolved());
    capturing = true;
    EXPECT_EQ(machine.fnReleased(10.39), nothing);  // latched: stays running

    capturing = false;
    machine.fnPressed(0.0);
    machine.leaderElapsed(0.25);
    capturing = true;
    EXPECT_EQ(machine.fnReleased(0.4), finish);  // exactly the threshold is a hold

    machine.fnPressed(20.0);
    EXPECT_EQ(machine.leaderElapsed(20.25), finish);  // held while capturing
    EXPECT_EQ(machine.fnReleased(21.0), nothing);

    // A hold whose capture was cancelled meanwhile (Esc) has nothing to finish.
    capturing = false;
    machine.fnPressed(30.0);
    machine.leaderElapsed(30.25);
    EXPECT_EQ(machine.fnReleased(31.0), nothing);
}

TEST_F(FnGestureMachineTest, ChordStartsAtOnceAndTheFirstReleaseDecides) {
    machine.fnPressed(1.0);
    EXPECT_EQ(machine.digitPressed(FnAction::slot(1), 1.1), Intents{FnIntent::startSlot(1)});
    capturing = true;
    EXPECT_EQ(machine.leaderElapsed(1.25), nothing);
    EXPECT_EQ(machine.fnReleased(2.1), finish);
    EXPECT_EQ(machine.digitReleased(FnAction::slot(1), 2.2), nothing);

    // Measured from the digit press: 0.45 s after the talk key but 0.3 s after the digit.
    capturing = false;
    machine.fnPressed(3.0);
    machine.digitPressed(FnAction::dictateTranslate(), 3.15);
    capturing = true;
    EXPECT_EQ(machine.digitReleased(FnAction::dictateTranslate(), 3.45), nothing);
    EXPECT_EQ(machine.fnReleased(4.0), nothing);

    capturing = false;
    machine.fnPressed(0.0);
    machine.digitPressed(FnAction::slot(3), 0.1);
    capturing = true;
    EXPECT_EQ(machine.digitReleased(FnAction::slot(3), 0.5), finish);
}

TEST_F(FnGestureMachineTest, OnlyTheChordsOwnKeyReleasesIt) {
    machine.fnPressed(0.0);
    machine.digitPressed(FnAction::slot(1), 0.0);
    EXPECT_EQ(machine.digitPressed(FnAction::slot(2), 0.1), nothing);  // second key ignored
    EXPECT_EQ(machine.digitPressed(FnAction::select(), 0.1), nothing);
    capturing = true;
    EXPECT_EQ(machine.digitReleased(FnAction::slot(2), 1.0), nothing);
    EXPECT_TRUE(machine.isChordResolved());
    EXPECT_EQ(machine.digitReleased(FnAction::slot(1), 1.0), finish);
}

TEST_F(FnGestureMachineTest, MomentaryChordFiresOncePerPress) {
    machine.fnPressed(0.0);
    EXPECT_EQ(machine.digitPressed(FnAction::translateClipboard(), 0.05),
              Intents{FnIntent::translateClipboard()});
    EXPECT_EQ(machine.digitPressed(FnAction::translateClipboard(), 0.1), nothing);
    EXPECT_EQ(machine.digitPressed(FnAction::slot(1), 0.1), nothing);
    EXPECT_EQ(machine.leaderElapsed(0.25), nothing);
    EXPECT_EQ(machine.digitReleased(FnAction::translateClipboard(), 0.6), nothing);
    EXPECT_EQ(machine.fnReleased(0.7), nothing);  // not a tap

    machine.fnPressed(1.0);
    EXPECT_EQ(machine.digitPressed(FnAction::clipPaste(), 1.1), Intents{FnIntent::clipPaste()});
}

TEST_F(FnGestureMachineTest, AnyChordKeyFinishesARunningCapture) {
    capturing = true;
    EXPECT_EQ(machine.digitPressed(FnAction::slot(1), 0.0), nothing);  // talk key is up
    machine.fnPressed(0.0);
    EXPECT_EQ(machine.digitPressed(FnAction::select(), 0.1), finish);

    // A chord that started the capture is ended by its own auto-repeat.
    capturing = false;
    machine.fnPressed(1.0);
    machine.digitPressed(FnAction::slot(1), 1.0);
    capturing = true;
    EXPECT_EQ(machine.digitPressed(FnAction::slot(1), 1.5), finish);
    EXPECT_EQ(machine.digitReleased(FnAction::slot(1), 2.0), nothing);
    EXPECT_EQ(machine.fnReleased(2.0), nothing);
    EXPECT_EQ(machine.digitPressed(FnAction::slot(1), 2.1), nothing);  // talk key up again
}

TEST_F(FnGestureMachineTest, PressingAgainOrResettingStartsOver) {
    machine.fnPressed(0.0);
    machine.leaderElapsed(0.25);
    machine.fnPressed(0.5);  // the key-up was lost
    EXPECT_FALSE(machine.isChordResolved());
    EXPECT_EQ(machine.fnReleased(0.6), startPlain);

    machine.fnPressed(1.0);
    machine.digitPressed(FnAction::slot(2), 1.0);
    capturing = true;
    machine.reset();
    EXPECT_FALSE(machine.isFnHeld());
    EXPECT_FALSE(machine.isChordResolved());
    EXPECT_EQ(machine.digitReleased(FnAction::slot(2), 2.0), nothing);
    EXPECT_EQ(machine.fnReleased(2.0), nothing);
}

}  // namespace
}  // namespace tevra
