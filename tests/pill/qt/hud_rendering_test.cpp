#include <gtest/gtest.h>

#include <QImage>
#include <QWidget>

#include "base/virtual_main_queue.h"
#include "pill/qt/hud_controller.h"

namespace tevra {
namespace {

class HudRenderingTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    std::shared_ptr<HUDController> hud = HUDController::create(queue, [] {
        return PillRect{0, 0, 1920, 1040};
    });

    // The panel as it stands after the last operation and some animation.
    QImage render(double seconds) {
        queue.runPending();
        queue.advance(seconds);
        return hud->panel()->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    }
};

// The centre bar stands at x 62.75 to 65.25 of the panel, about y 19.
TEST_F(HudRenderingTest, ErrorPaintsOrangeBarsOnTheDarkCapsule) {
    hud->error("not shown");
    const QImage image = render(0.3);
    const QColor bar = image.pixelColor(63, 19);
    EXPECT_GT(bar.red(), 200);
    EXPECT_GT(bar.green(), 100);
    EXPECT_LT(bar.green(), 180);
    EXPECT_LT(bar.blue(), 60);
    EXPECT_LT(image.pixelColor(64, 33).lightness(), 60);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "rounded corners stay clear";
}

TEST_F(HudRenderingTest, DoneLetsTheBarsGoAndStrokesAWhiteCheckMark) {
    hud->processing();
    EXPECT_GT(render(1.0).pixelColor(63, 19).lightness(), 150);

    hud->done();
    const QImage done = render(0.6);
    // Along the long stroke, from (63, 22) up to the tip at (68.6, 15.6).
    int brightest = 0;
    for (int x = 65; x <= 67; ++x) {
        brightest = std::max(brightest, done.pixelColor(x, 18).lightness());
    }
    EXPECT_GT(brightest, 230);
    EXPECT_LT(done.pixelColor(19, 19).lightness(), 60) << "the outer bars are gone";
    EXPECT_LT(done.pixelColor(108, 19).lightness(), 60);
}

}  // namespace
}  // namespace tevra
