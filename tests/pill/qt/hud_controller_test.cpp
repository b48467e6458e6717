#include "pill/qt/hud_controller.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <thread>

#include "base/virtual_main_queue.h"
#include "pill/hud_geometry.h"
#include "pill/qt/meter_view.h"

namespace tevra {
namespace {

using Mode = HudMeter::Mode;

class HudControllerTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    // A 1920 x 1080 screen with a 40 px dock at its bottom.
    std::optional<PillRect> area = PillRect{0, 0, 1920, 1040};
    std::shared_ptr<HUDController> hud = HUDController::create(queue, [this] { return area; });
    const QPoint home{896, 974};

    QWidget& panel() { return *hud->panel(); }
    const HudMeter& meter() { return hud->meter()->meter(); }
};

TEST_F(HudControllerTest, PanelFloatsAtTheBottomCentreAndNeverTakesFocusOrTheMouse) {
    for (Qt::WindowType flag : {Qt::FramelessWindowHint, Qt::WindowStaysOnTopHint,
                                Qt::WindowDoesNotAcceptFocus, Qt::WindowTransparentForInput}) {
        EXPECT_TRUE(panel().windowFlags().testFlag(flag)) << flag;
    }
    EXPECT_TRUE(panel().testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_TRUE(panel().testAttribute(Qt::WA_TransparentForMouseEvents));
    QWidget focused;
    focused.show();
    focused.activateWindow();
    QApplication::processEvents();

    std::thread caller([this] { hud->error("Paste failed"); });
    caller.join();
    EXPECT_FALSE(panel().isVisible()) << "operations wait for the main queue";
    queue.runPending();
    QApplication::processEvents();
    ASSERT_TRUE(panel().isVisible());
    EXPECT_EQ(panel().geometry(), QRect(home - QPoint(7, 0), QSize(128, 38)))
        << "the shake's first swing";
    EXPECT_TRUE(panel().windowHandle()->flags().testFlag(Qt::WindowTransparentForInput));
    EXPECT_EQ(QApplication::activeWindow(), &focused);
    // The message reaches nobody: the meter is the panel's only content.
    EXPECT_EQ(panel().findChildren<QWidget*>(), QList<QWidget*>{hud->meter()});
}

TEST_F(HudControllerTest, ErrorTwiceEndsOnTheSameOriginAndRestartsTheHideTimer) {
    hud->error("first");
    queue.runPending();
    queue.advance(0.1);
    ASSERT_NE(panel().pos(), home) << "mid-shake";
    hud->error("second");
    queue.runPending();
    EXPECT_EQ(meter().errorGlow, 1.0);
    queue.advance(0.5);
    EXPECT_EQ(panel().pos(), home);

    queue.advance(1.19);  // 1.69 s after the second error
    EXPECT_TRUE(panel().isVisible());
    queue.advance(0.02);
    EXPECT_FALSE(panel().isVisible());
}

TEST_F(HudControllerTest, HideDuringAShakeStopsEveryTimerAndTheShakeFinishesUnseen) {
    hud->error("no text");
    queue.runPending();
    queue.advance(0.1);
    hud->hide();
    queue.runPending();
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(meter().mode, Mode::idle);
    const double phase = meter().phase;

    queue.advance(0.5);
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(panel().pos(), home);
    EXPECT_EQ(meter().phase, phase) << "the meter's timer stopped";
    EXPECT_EQ(queue.pendingCount(), 0);
}

TEST_F(HudControllerTest, HideTimerStartsWithDoneAndProcessingStopsIt) {
    hud->processing();
    queue.runPending();
    queue.advance(10);
    EXPECT_TRUE(panel().isVisible()) << "processing stays until the next call";
    EXPECT_NEAR(meter().phase, 600 * 0.13, 0.14) << "one meter step per 1/60 s";

    hud->done();
    queue.runPending();
    queue.advance(0.84);
    EXPECT_TRUE(panel().isVisible());
    EXPECT_EQ(meter().doneProgress, 1);
    queue.advance(0.02);
    EXPECT_FALSE(panel().isVisible());

    hud->done();
    queue.runPending();
    queue.advance(0.5);
    hud->processing();
    queue.runPending();
    queue.advance(5);
    EXPECT_TRUE(panel().isVisible());
}

TEST_F(HudControllerTest, FollowsTheScreenAtEachShowAndStaysPutWithoutOne) {
    area = PillRect{1920, 32, 1280, 992};
    hud->done();
    queue.runPending();
    EXPECT_EQ(panel().pos(), QPoint(2496, 958));

    area.reset();
    hud->error("");
    queue.runPending();
    queue.advance(0.5);
    EXPECT_EQ(panel().pos(), QPoint(2496, 958));

    auto onPrimary = HUDController::create(queue);
    onPrimary->processing();
    queue.runPending();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    const PillPoint expected = HudGeometry::panelOrigin(
        {double(screen.x()), double(screen.y()), double(screen.width()), double(screen.height())});
    EXPECT_EQ(onPrimary->panel()->pos(), QPoint(int(expected.x), int(expected.y)));
}

TEST_F(HudControllerTest, LevelIsSetWithoutShowingAndRecordingShowsTheVoice) {
    hud->updateLevel(3);
    queue.runPending();
    EXPECT_FALSE(panel().isVisible());
    EXPECT_EQ(meter().levelTarget, 1);

    hud->startRecording("", "");
    queue.runPending();
    queue.advance(1);
    EXPECT_EQ(meter().mode, Mode::recording);
    EXPECT_GT(meter().bars[6], 0.2) << "above what silence reaches";
}

TEST_F(HudControllerTest, ControllerGoneBeforeItsTimersLeavesThemHarmless) {
    hud->error("late");
    queue.runPending();
    hud->done();
    hud.reset();
    queue.advance(3);
    EXPECT_EQ(queue.pendingCount(), 0);
}

}  // namespace
}  // namespace tevra
