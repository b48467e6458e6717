// The pill on the test display's X server, where no compositor blends
// windows: each phase as the screen shows it, over a light and a dark desktop.
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include "app/qt/qt_main_queue.h"
#include "capture/linux/x11_connection.h"
#include "core/weft_runtime.h"
#include "pill/linux/x11_compositor.h"
#include "pill/pill_manager.h"
#include "pill/qt/qt_pill_desktop.h"
#include "store/history_store.h"
#include "support/desktop/event_wait.h"
#include "support/desktop/peer_process.h"
#include "support/desktop/screenshots.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::waitUntil;
using testing::xdotool;

TEST(PillOnX11, EveryPhaseIsAnOpaqueCapsuleCutToShapeOnLightAndDarkDesktops) {
    QObject timers;
    QtMainQueue queue(&timers);
    testing::TempDir data;
    WeftRuntime runtime(data.path(), false, nullptr);
    for (const char* text : {"Book the train to Kraków for Thursday.",
                             "Thanks, the draft reads well \u2014 one comment on page 3."}) {
        HistoryRow row;
        row.polished = text;
        runtime.store()->add(row);
    }
    const auto display = X11Connection::open();
    ASSERT_TRUE(display);
    ASSERT_FALSE(x11CompositorRunning(*display)) << "the test display has no compositor";
    auto pills =
        PillManager::create(queue, runtime, nullptr,
                            std::make_shared<QtPillDesktop>(
                                queue, [display] { return x11CompositorRunning(*display); }),
                            {});

    QWidget desktop(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
    desktop.setGeometry(QGuiApplication::primaryScreen()->geometry());
    desktop.setAutoFillBackground(true);
    desktop.show();
    pills->show();
    PillController& pill = *pills->controllers().at(0);

    auto orange = [](QColor c) { return c.red() > 200 && c.green() < 180 && c.blue() < 80; };
    auto bright = [](QColor c) { return c.lightness() > 180; };
    struct Case {
        const char* name;
        std::function<void()> enter;
        bool mouseOver;  // keeps a card open
        std::function<bool(QColor)> mark;
        int marks;  // at least this many pixels of the mark
    };
    const std::vector<Case> cases = {
        {"idle", [] {}, false, bright, 8},
        {"peek", [&] { pill.state().setPhase(PillPhase::peek); }, true, bright, 400},
        {"full", [&] { pill.state().openFull(); }, true, bright, 800},
        {"recording", [&] { pills->startRecording(), pills->updateLevel(0.8); }, false, bright, 40},
        {"processing", [&] { pills->processing(); }, false, bright, 20},
        {"done", [&] { pills->done(); }, false, bright, 8},
        {"error", [&] { pills->startRecording(), pills->error(); }, false, orange, 20},
    };
    for (const QColor backdrop : {QColor(236, 238, 242), QColor(24, 30, 44)}) {
        desktop.setPalette(QPalette(backdrop));
        const bool light = backdrop.lightness() > 128;
        for (const Case& c : cases) {
            xdotool({"mousemove", c.mouseOver ? "640" : "20", c.mouseOver ? "773" : "20"});
            c.enter();
            waitUntil([] { return false; }, 0.6);
            const PillRect frame = pill.panel().frame();
            const QImage shot =
                QGuiApplication::primaryScreen()
                    ->grabWindow(0, int(frame.x), int(frame.y), int(frame.width), int(frame.height))
                    .toImage();
            const QString name = QString("x11-pill-%1-%2").arg(c.name, light ? "light" : "dark");
            testing::saveScreenshot(name, shot);
            EXPECT_EQ(shot.pixelColor(0, 0), backdrop) << c.name << ": no black corners";
            EXPECT_LT(shot.pixelColor(int(frame.width) / 2, int(frame.height) - 4).lightness(), 60)
                << c.name << ": the dark capsule";
            int marks = 0;
            for (int y = 0; y < shot.height(); ++y) {
                for (int x = 0; x < shot.width(); ++x) {
                    marks += c.mark(shot.pixelColor(x, y));
                }
            }
            EXPECT_GE(marks, c.marks) << c.name << " on " << (light ? "light" : "dark");
        }
        pills->finishRecording();
    }
}

}  // namespace
}  // namespace tevra
