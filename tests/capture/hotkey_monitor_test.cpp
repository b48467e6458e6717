#include "capture/hotkey_monitor.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "base/virtual_main_queue.h"
#include "support/recording_desktop_keyboard.h"
#include "support/recording_hotkey_calls.h"

namespace tevra {
namespace {

using testing::RecordingDesktopKeyboard;
using Calls = std::vector<std::string>;
using Kind = DesktopKeyboard::Event::Kind;
using Modifiers = DesktopKeyboard::Modifiers;
using Grab = RecordingDesktopKeyboard::Grab;

uint32_t digit(int d) {
    return KeySyms::digit(d);
}

class HotkeyMonitorTest : public ::testing::Test {
protected:
    std::shared_ptr<HotkeyMonitor> make(int slotCount, std::set<Grab> heldElsewhere = {}) {
        auto owned = std::make_unique<RecordingDesktopKeyboard>();
        owned->heldElsewhere = std::move(heldElsewhere);
        owned->clock = &queue;
        keyboard = owned.get();
        auto monitor = std::make_shared<HotkeyMonitor>(
            queue, std::move(owned), slotCount,
            [this](const std::string& line) { log.push_back(line); });
        recorder.wire(*monitor);
        return monitor;
    }
    std::shared_ptr<HotkeyMonitor> started(int slotCount) {
        auto monitor = make(slotCount);
        EXPECT_EQ(monitor->start(), "hotkey");
        return monitor;
    }
    void press(uint32_t keysym, bool repeat = false) {
        keyboard->deliver({Kind::keyDown, keysym, repeat});
    }
    void release(uint32_t keysym) { keyboard->deliver({Kind::keyUp, keysym}); }
    void tap(uint32_t keysym, double heldFor) {
        press(keysym);
        queue.advance(heldFor);
        release(keysym);
    }
    Calls said() { return recorder.take(); }

    VirtualMainQueue queue;
    RecordingDesktopKeyboard* keyboard = nullptr;
    testing::RecordingHotkeyCalls recorder;
    bool& capturing = recorder.capturing;
    std::vector<std::string> log;
};

TEST_F(HotkeyMonitorTest, RegistersTheSlotKeysAndTheFixedKeysWithAltAndLogsThem) {
    auto monitor = started(3);
    const std::set<Grab> expected = {
        {digit(1), Modifiers::alt}, {digit(2), Modifiers::alt}, {digit(3), Modifiers::alt},
        {digit(7), Modifiers::alt}, {digit(8), Modifiers::alt}, {digit(9), Modifiers::alt},
        {digit(0), Modifiers::alt},
    };
    EXPECT_EQ(keyboard->grabs, expected) << "Esc belongs to the applications until a capture";
    EXPECT_EQ(log, std::vector<std::string>{
                       "hotkeys registered: ⌥1…⌥3 + ⌥7 select + ⌥8/⌥9/⌥0 translate"});

    monitor->stop();
    EXPECT_TRUE(keyboard->grabs.empty());
    EXPECT_FALSE(keyboard->isOpen);

    // The slot count is clamped to 1..6.
    auto none = make(0);
    none->start();
    EXPECT_EQ(none->slotCount(), 1);
    EXPECT_TRUE(keyboard->holds(digit(1), Modifiers::alt));
    EXPECT_FALSE(keyboard->holds(digit(2), Modifiers::alt));
    auto many = make(9);
    many->start();
    EXPECT_EQ(many->slotCount(), 6);
    EXPECT_TRUE(keyboard->holds(digit(6), Modifiers::alt));
    EXPECT_EQ(keyboard->grabs.size(), 10u);
    EXPECT_EQ(log.back(), "hotkeys registered: ⌥1…⌥6 + ⌥7 select + ⌥8/⌥9/⌥0 translate");
}

// A slot key held by another client, and a start with none to be had, are
// tested against a real X server with a second client.

TEST_F(HotkeyMonitorTest, SlotKeysStartOnPressAndFinishOnAHeldRelease) {
    auto monitor = started(6);
    tap(digit(1), 0.35);
    EXPECT_EQ(said(), (Calls{"start 0", "finish"}));

    // A short press latches; the next press of any slot key ends the capture.
    tap(digit(4), 0.2);
    EXPECT_EQ(said(), Calls{"start 3"});
    tap(digit(6), 0.1);
    EXPECT_EQ(said(), Calls{"finish"});
}

TEST_F(HotkeyMonitorTest, ASlotPressDuringACaptureFinishesItAndForgetsEarlierPresses) {
    auto monitor = started(6);
    press(digit(3));
    queue.advance(0.1);
    press(digit(1));
    EXPECT_EQ(said(), (Calls{"start 2", "finish"}));
    queue.advance(1);
    release(digit(3));
    release(digit(1));
    EXPECT_EQ(said(), Calls{});
}

TEST_F(HotkeyMonitorTest, FixedKeysActOnPressAndTheTranslatingKeyLikeASlot) {
    auto monitor = started(1);
    tap(digit(7), 1);
    tap(digit(8), 1);
    tap(digit(9), 1);
    EXPECT_EQ(said(), (Calls{"select", "translate selection", "translate clipboard"}));

    tap(digit(0), 0.4);
    EXPECT_EQ(said(), (Calls{"translate start", "translate finish"}));
    tap(digit(0), 0.1);
    EXPECT_EQ(said(), Calls{"translate start"});
    tap(digit(0), 0.1);
    EXPECT_EQ(said(), Calls{"translate finish"});
}

TEST_F(HotkeyMonitorTest, TheKeyboardsAutoRepeatIsNotAPress) {
    auto monitor = started(2);
    press(digit(1));
    for (int i = 0; i < 5; ++i) {
        queue.advance(0.1);
        press(digit(1), true);
    }
    release(digit(1));
    EXPECT_EQ(said(), (Calls{"start 0", "finish"}));
    press(KeySyms::period);
    press(digit(5));  // not registered with two slots
    EXPECT_EQ(said(), Calls{});
}

TEST_F(HotkeyMonitorTest, EscIsTakenOnlyDuringACaptureAndCancelsIt) {
    auto monitor = started(1);
    press(KeySyms::escape);
    EXPECT_EQ(said(), Calls{});

    tap(digit(1), 0.1);
    monitor->enableCancelKey();
    EXPECT_TRUE(keyboard->holds(KeySyms::escape, Modifiers::none));
    press(KeySyms::escape);
    release(KeySyms::escape);
    EXPECT_EQ(said(), (Calls{"start 0", "cancel"}));

    monitor->disableCancelKey();
    EXPECT_FALSE(keyboard->holds(KeySyms::escape, Modifiers::none));
    press(KeySyms::escape);
    EXPECT_EQ(said(), Calls{});

    // Esc held by another program is no error; the capture ends by its key.
    auto second = make(1, {{KeySyms::escape, Modifiers::none}});
    second->start();
    second->enableCancelKey();
    press(KeySyms::escape);
    second->disableCancelKey();
    EXPECT_EQ(said(), Calls{});
}

}  // namespace
}  // namespace tevra
