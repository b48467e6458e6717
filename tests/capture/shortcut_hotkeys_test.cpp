#include "capture/shortcut_hotkeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "support/recording_hotkey_calls.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// The desktop's side: what was bound, and the handlers to press with.
class RecordingGlobalShortcuts : public GlobalShortcuts {
public:
    std::vector<Shortcut> bound;
    Handlers handlers;
    bool closed = false;

    void bind(const std::vector<Shortcut>& shortcuts, Handlers given) override {
        bound = shortcuts;
        handlers = std::move(given);
    }
    void close() override { closed = true; }
};

struct Harness {
    Harness() {
        auto owned = std::make_unique<RecordingGlobalShortcuts>();
        desktop = owned.get();
        hotkeys = std::make_shared<ShortcutHotkeys>(
            queue, std::move(owned), std::vector<std::string>{"Plain", "Email"},
            [this](const std::string& line) { log.push_back(line); });
        recorder.wire(*hotkeys);
        EXPECT_EQ(hotkeys->start(), "global shortcuts portal");
    }
    VirtualMainQueue queue;
    RecordingGlobalShortcuts* desktop = nullptr;
    std::shared_ptr<ShortcutHotkeys> hotkeys;
    testing::RecordingHotkeyCalls recorder;
    std::vector<std::string> log;
};

TEST(ShortcutHotkeysTest, BindsAShortcutPerVoiceAndActionWithTheAltKeysSuggested) {
    Harness h;
    std::vector<std::string> bound;
    for (const auto& shortcut : h.desktop->bound) {
        bound.push_back(shortcut.id + "=" + shortcut.preferredTrigger);
    }
    EXPECT_THAT(bound, ElementsAre("talk=ALT+1", "voice-2=ALT+2", "select-text=ALT+7",
                                   "translate-selection=ALT+8", "translate-clipboard=ALT+9",
                                   "dictate-translate=ALT+0",
                                   "queue-add=", "queue-paste=", "queue-mode=", "cancel="));
    EXPECT_EQ(h.desktop->bound[1].description, "Dictate with voice 1 (Email)");

    // The Alt of a shortcut is taken as held until a moment after its release.
    h.desktop->handlers.activated("translate-selection", 1);
    EXPECT_TRUE(h.hotkeys->keysHeld());
    h.desktop->handlers.deactivated("translate-selection", 1.2);
    EXPECT_TRUE(h.hotkeys->keysHeld());
    h.queue.advance(ShortcutHotkeys::releaseSettle);
    EXPECT_FALSE(h.hotkeys->keysHeld());

    h.desktop->handlers.failed("none on the session bus");
    EXPECT_THAT(h.log.back(), HasSubstr("global shortcuts portal: none on the session bus"));
    h.hotkeys->stop();
    EXPECT_TRUE(h.desktop->closed);
}

TEST(ShortcutHotkeysTest, PressesAndReleasesFollowTheHoldAndTapRules) {
    // '+' activates and '-' deactivates the shortcut at the time given.
    struct Step {
        char edge;
        const char* id;
        double at;
    };
    struct Row {
        const char* name;
        std::vector<Step> steps;
        std::vector<std::string> calls;
        bool cancelEnabled = false;
    };
    const Row rows[] = {
        {"held", {{'+', "talk", 1}, {'-', "talk", 2}}, {"start 0", "finish"}},
        {"tapped, then tapped again",
         {{'+', "voice-2", 1}, {'-', "voice-2", 1.1}, {'+', "talk", 3}, {'-', "talk", 3.1}},
         {"start 1", "finish"}},
        {"the desktop's repeats of a held key",
         {{'+', "talk", 1}, {'+', "talk", 1.6}, {'+', "talk", 1.63}, {'-', "talk", 2}},
         {"start 0", "finish"}},
        // A desktop that never tells of releases: the next press ends the capture.
        {"no releases", {{'+', "talk", 1}, {'+', "talk", 5}}, {"start 0", "finish"}},
        {"momentary actions",
         {{'+', "select-text", 1},
          {'-', "select-text", 1.1},
          {'+', "queue-add", 2},
          {'-', "queue-add", 2.1},
          {'+', "queue-paste", 3},
          {'+', "queue-mode", 4},
          {'+', "translate-clipboard", 5}},
         {"select", "clip stack", "clip paste", "clip mode", "translate clipboard"}},
        {"dictate and translate, held",
         {{'+', "dictate-translate", 1}, {'-', "dictate-translate", 3}},
         {"translate start", "translate finish"}},
        {"cancel only during a capture",
         {{'+', "cancel", 1}, {'-', "cancel", 1.1}, {'+', "talk", 2}, {'+', "cancel", 2.2}},
         {"start 0", "cancel"},
         true},
        {"cancel outside a capture", {{'+', "cancel", 1}}, {}},
        {"unknown shortcut", {{'+', "voice-6", 1}}, {}},
    };
    for (const Row& row : rows) {
        Harness h;
        for (const Step& step : row.steps) {
            if (row.cancelEnabled && h.recorder.capturing) {
                h.hotkeys->enableCancelKey();
            }
            auto& handler =
                step.edge == '+' ? h.desktop->handlers.activated : h.desktop->handlers.deactivated;
            handler(step.id, step.at);
        }
        EXPECT_EQ(h.recorder.take(), row.calls) << row.name;
    }
}

}  // namespace
}  // namespace tevra
