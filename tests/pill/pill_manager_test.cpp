// The pills of every screen on virtual time, against a fake window system.
#include "pill/pill_manager.h"

#include <gtest/gtest.h>

#include <thread>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"
#include "support/fake_pill_desktop.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::FakePillDesktop;
using testing::FakePillPanel;
using Phase = PillPhase;

constexpr PillScreen kLaptop{1, {0, 0, 1280, 800}};
constexpr PillScreen kMonitor{2, {1280, 0, 1920, 1080}};

class PillManagerTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    testing::TempDir data;
    WeftRuntime runtime{data.path(), false, nullptr};
    std::shared_ptr<FakePillDesktop> desktop =
        std::make_shared<FakePillDesktop>(queue, std::vector{kLaptop, kMonitor});
    std::vector<std::string> pasted;
    std::shared_ptr<PillManager> pills = makeManager();

    std::shared_ptr<PillManager> makeManager(std::optional<PillPreview> preview = {}) {
        auto manager = PillManager::create(
            queue, runtime, &notifications, desktop,
            [this](const std::string& text) { pasted.push_back(text); }, preview);
        manager->show();
        return manager;
    }
    PillController& pill(uint32_t screen) {
        for (const auto& controller : pills->controllers()) {
            if (controller->displayID() == screen) {
                return *controller;
            }
        }
        throw std::runtime_error("no pill on screen " + std::to_string(screen));
    }
    static FakePillPanel& panel(PillController& controller) {
        return static_cast<FakePillPanel&>(controller.panel());
    }
    // The mouse over the middle of a pill, or far from every one.
    void hover(PillController& controller) {
        const PillRect frame = controller.panel().frame();
        desktop->mouse = {frame.midX(), frame.midY()};
    }
    void leave() { desktop->mouse = {-500, -500}; }
};

TEST_F(PillManagerTest, EveryScreenHasItsPillAndOnlyTheMainOneShowsACapture) {
    ASSERT_EQ(pills->controllers().size(), 2u);
    EXPECT_EQ(panel(pill(1)).frameNow, (PillRect{616, 758, 48, 30}));
    EXPECT_EQ(panel(pill(2)).frameNow, (PillRect{2216, 1038, 48, 30}));
    EXPECT_TRUE(panel(pill(1)).visible && panel(pill(2)).visible);

    pills->startRecording();
    EXPECT_EQ(pill(1).state().phase(), Phase::recording);
    EXPECT_EQ(pill(2).state().phase(), Phase::idle);
    EXPECT_EQ(panel(pill(1)).frameNow, (PillRect{598, 758, 84, 30}));
    pills->finishRecording();

    desktop->main = 2;
    pills->startRecording();
    EXPECT_EQ(pill(2).state().phase(), Phase::recording);
    EXPECT_EQ(pill(1).state().phase(), Phase::idle);

    // The screens change during the capture: the old pill goes on with it unseen.
    const auto old = pills->recordingController();
    desktop->setScreens({kLaptop});
    queue.runPending();
    ASSERT_EQ(pills->controllers().size(), 1u);
    EXPECT_FALSE(panel(*old).visible);
    pills->updateLevel(7);
    EXPECT_EQ(old->state().level(), 1.0);
    pills->done();
    queue.advance(1);
    EXPECT_EQ(old->state().phase(), Phase::idle);
    EXPECT_EQ(pills->recordingController(), nullptr);
    pills->startRecording();  // no pill on the main screen: the first takes it
    EXPECT_EQ(pills->recordingController().get(), &pill(1));

    pills->finishRecording();
    desktop->setScreens({kLaptop, kMonitor});  // the monitor comes back
    queue.runPending();
    ASSERT_EQ(pills->controllers().size(), 2u);
    EXPECT_TRUE(panel(pill(2)).visible);
    pills->hide();
    EXPECT_FALSE(panel(pill(1)).visible);
    pills->startRecording();
    EXPECT_TRUE(pills->isVisible() && panel(pill(1)).visible);
}

TEST_F(PillManagerTest, TheOutcomeOfACaptureStaysForItsMomentAndNoLonger) {
    struct Case {
        const char* name;
        std::function<void(PillManager&)> after;  // what follows startRecording at time 0
        double at;                                // when it is looked at
        Phase phase;
        PillMeterMode meter;
    };
    const std::vector<Case> cases = {
        {"processing stays", [](PillManager& p) { p.processing(); }, 30, Phase::recording,
         PillMeterMode::processing},
        {"done, just before", [](PillManager& p) { p.done(); }, 0.84, Phase::recording,
         PillMeterMode::done},
        {"done, after 0.85 s", [](PillManager& p) { p.done(); }, 0.86, Phase::idle,
         PillMeterMode::done},
        {"error, just before", [](PillManager& p) { p.error(); }, 1.59, Phase::recording,
         PillMeterMode::error},
        {"error, after 1.6 s", [](PillManager& p) { p.error(); }, 1.61, Phase::idle,
         PillMeterMode::error},
        {"finish at once", [](PillManager& p) { p.finishRecording(); }, 0, Phase::idle,
         PillMeterMode::recording},
        {"a late done finds nothing", [](PillManager& p) { p.finishRecording(), p.done(); }, 2,
         Phase::idle, PillMeterMode::recording},
        {"a new capture cancels the collapse", [](PillManager& p) { p.done(), p.startRecording(); },
         2, Phase::recording, PillMeterMode::recording},
    };
    for (const Case& c : cases) {
        pills->startRecording();
        c.after(*pills);
        queue.advance(c.at);
        EXPECT_EQ(pill(1).state().phase(), c.phase) << c.name;
        EXPECT_EQ(pill(1).state().meterMode(), c.meter) << c.name;
        pills->finishRecording();
    }

    // From another thread a call waits for the main queue.
    pills->startRecording();
    std::thread([this] { pills->processing(); }).join();
    EXPECT_EQ(pill(1).state().meterMode(), PillMeterMode::recording);
    queue.runPending();
    EXPECT_EQ(pill(1).state().meterMode(), PillMeterMode::processing);
}

TEST_F(PillManagerTest, TheMouseOpensTheCardsAndTheyCloseAfterItLeaves) {
    PillController& p = pill(1);
    queue.advance(1);
    EXPECT_FALSE(p.isTracking()) << "a resting pill has no timer";
    EXPECT_EQ(queue.pendingCount(), 0);

    hover(p);
    p.pointerEntered();
    queue.advance(0.07);
    EXPECT_EQ(p.state().phase(), Phase::peek);
    EXPECT_EQ(panel(p).frameNow, (PillRect{518, 538, 244, 250})) << "grows at once";

    leave();
    queue.advance(0.3);
    hover(p);
    queue.advance(0.3);
    EXPECT_EQ(p.state().phase(), Phase::peek) << "came back in time";
    leave();
    queue.advance(0.45);  // 0.35 s from the first look that found it outside
    EXPECT_EQ(p.state().phase(), Phase::idle);
    EXPECT_EQ(panel(p).capsule, (PillRect{616, 758, 48, 30})) << "the capsule shrinks first";
    EXPECT_EQ(panel(p).frameNow.width, 244) << "the panel follows 0.34 s later";
    queue.advance(0.35);
    EXPECT_EQ(panel(p).frameNow, (PillRect{616, 758, 48, 30}));
    EXPECT_FALSE(p.isTracking());

    hover(p);
    p.pointerEntered();
    queue.advance(0.07);
    p.state().openFull();
    EXPECT_EQ(panel(p).frameNow, (PillRect{480, 376, 320, 412}));
    leave();
    queue.advance(7.9);
    EXPECT_EQ(p.state().phase(), Phase::full);
    queue.advance(0.2);
    EXPECT_EQ(p.state().phase(), Phase::idle);

    // A capture over an open card: the panel takes the meter's size after the delay.
    hover(p);
    p.pointerEntered();
    queue.advance(0.07);
    p.state().openFull();
    pills->startRecording();
    EXPECT_EQ(p.state().phase(), Phase::recording);
    queue.advance(0.33);
    EXPECT_EQ(panel(p).frameNow.width, 320);
    queue.advance(0.02);
    EXPECT_EQ(panel(p).frameNow, (PillRect{598, 758, 84, 30}));
    queue.advance(5);
    EXPECT_EQ(p.state().phase(), Phase::recording) << "the mouse neither opens nor closes it";
    EXPECT_TRUE(p.isAnimatingMeter());
    pills->finishRecording();
    leave();
    queue.advance(1);
    EXPECT_FALSE(p.isAnimatingMeter() || p.isTracking());
}

TEST_F(PillManagerTest, ADroppedPillSnapsToTheNearestEdgeAndStaysThereAfterARestart) {
    PillController& p = pill(1);
    hover(p);
    p.state().onDrag(true);
    desktop->mouse = {40, 300};
    p.state().onDrag(false);
    EXPECT_TRUE(p.isDragging());
    EXPECT_EQ(panel(p).frameNow, (PillRect{16, 285, 48, 30})) << "follows the mouse";
    desktop->mouse = {-300, 300};
    p.state().onDrag(false);
    EXPECT_EQ(panel(p).frameNow.x, 0) << "kept on the screen";
    queue.advance(1);
    EXPECT_EQ(p.state().phase(), Phase::idle) << "the tracker waits for the drop";

    p.state().onMoveEnd();
    EXPECT_EQ(p.state().dock(), PillDock::left);
    queue.advance(0.3);
    EXPECT_EQ(panel(p).frameNow, (PillRect{12, 273, 26, 54}));
    const std::string file = testing::readFile(data / "pill_layout.json");
    EXPECT_NE(file.find("\"1\":{\"edge\":\"left\""), std::string::npos) << file;
    EXPECT_EQ(testing::modeOf(data / "pill_layout.json"), 0600u);

    pills.reset();  // a restart
    pills = makeManager();
    EXPECT_EQ(pill(1).state().dock(), PillDock::left);
    EXPECT_EQ(panel(pill(1)).frameNow, (PillRect{12, 273, 26, 54}));
    EXPECT_EQ(pill(2).state().dock(), PillDock::bottom) << "each screen keeps its own";
}

TEST_F(PillManagerTest, AClickedRowIsPastedAMomentLaterAndTheCardCloses) {
    HistoryRow row;
    row.polished = "Send the report by Friday.";
    runtime.store()->add(row);
    PillController& p = pill(1);
    p.state().openFull();
    ASSERT_EQ(p.state().history().size(), 1u) << "the card reads the history on opening";

    p.repaste(p.state().history()[0]);
    p.repaste(p.state().history()[0]);
    queue.advance(0.44);
    EXPECT_TRUE(pasted.empty());
    EXPECT_TRUE(p.state().pastingRow().has_value());
    queue.advance(0.02);
    EXPECT_EQ(pasted, std::vector<std::string>{row.polished});
    EXPECT_EQ(p.state().phase(), Phase::idle);
    EXPECT_FALSE(p.state().pastingRow().has_value());
}

TEST_F(PillManagerTest, APreviewShowsAPhaseWithoutACapture) {
    pills.reset();
    pills = makeManager(PillPreview{Phase::recording, PillMeterMode::error});
    queue.advance(0.79);
    EXPECT_EQ(pill(2).state().phase(), Phase::idle);
    queue.advance(0.02);
    EXPECT_EQ(pill(2).state().phase(), Phase::recording);
    EXPECT_EQ(pill(2).state().meterMode(), PillMeterMode::error);
    const double level = pill(2).state().level();
    queue.advance(0.1);
    EXPECT_NE(pill(2).state().level(), level);
    EXPECT_GE(pill(2).state().level(), 0.45);
}

}  // namespace
}  // namespace tevra
