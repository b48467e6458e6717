// The pill's panel drawn by Qt's offscreen platform: each phase's look, left
// as pictures in the build's screenshots/ folder, and the clicks on its card.
#include "pill/qt/pill_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "pill/pill_manager.h"
#include "pill/qt/qt_pill_desktop.h"
#include "store/history_store.h"
#include "support/desktop/screenshots.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

const QColor kLightDesktop(236, 238, 242);
const QColor kDarkDesktop(24, 30, 44);

bool isOrange(QColor c) {
    return c.red() > 200 && c.green() > 100 && c.green() < 180 && c.blue() < 80;
}

// Pixels of the picture for which the test holds.
int count(const QImage& image, const std::function<bool(QColor)>& test) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            n += test(image.pixelColor(x, y));
        }
    }
    return n;
}

class PillWindowTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    testing::TempDir data;
    WeftRuntime runtime{data.path(), false, nullptr};
    bool compositing = true;
    std::vector<std::string> pasted;
    std::shared_ptr<PillManager> pills;

    void SetUp() override {
        const char* texts[] = {"Send the Q3 report to Marta by Friday, with the figures.",
                               "Dzień dobry, przesyłam fakturę w załączniku.",
                               "Remind me to call the dentist tomorrow morning."};
        double ts = HistoryRow::currentTimestamp() - 3 * 3600;
        for (const char* text : texts) {
            HistoryRow row;
            row.polished = text;
            row.ts = ts += 3600;
            runtime.store()->add(row);
        }
        auto desktop = std::make_shared<QtPillDesktop>(queue, [this] { return compositing; });
        pills = PillManager::create(queue, runtime, nullptr, desktop,
                                    [this](const std::string& text) { pasted.push_back(text); });
        pills->show();
        queue.runPending();
    }

    PillController& pill() { return *pills->controllers().at(0); }
    PillWindow& window() { return dynamic_cast<PillWindow&>(pill().panel()); }

    // The panel after seconds of animation, drawn at a scale on transparency.
    QImage shot(double seconds, double scale = 1) {
        queue.advance(seconds);
        QImage image(window().size() * scale, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        window().render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image.convertToFormat(QImage::Format_ARGB32);
    }
    void mouse(QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton) {
        QMouseEvent event(type, at, window().mapToGlobal(at), button,
                          type == QEvent::MouseMove ? Qt::NoButton : button, Qt::NoModifier);
        QApplication::sendEvent(&window(), &event);
    }
    void click(QPointF at) {
        mouse(QEvent::MouseButtonPress, at);
        mouse(QEvent::MouseButtonRelease, at);
    }
};

TEST_F(PillWindowTest, EveryPhaseReadsOnLightAndDarkDesktopsAtOneAndTwoTimesTheScale) {
    struct Case {
        const char* name;
        std::function<void()> enter;
        double seconds;
        std::function<bool(const QImage&)> looksRight;
    };
    // Inside the capsule, below its top edge, where nothing but the glass is drawn.
    auto glass = [](const QImage& image) {
        const double scale = image.devicePixelRatio();
        return image.pixelColor(image.width() / 2, static_cast<int>(5 * scale));
    };
    auto bright = [](QColor c) { return c.lightness() > 180; };
    const std::vector<Case> cases = {
        {"idle", [] {}, 0.5, [&](const QImage& i) { return count(i, bright) > 8; }},
        {"recording",
         [&] {
             pills->startRecording();
             pills->updateLevel(0.8);
         },
         1.0,
         [&](const QImage& i) {
             return count(i, [](QColor c) { return c.lightness() > 230 && c.saturation() < 20; }) >
                    40;
         }},
        {"processing", [&] { pills->processing(); }, 1.0,
         [&](const QImage& i) { return count(i, bright) > 20; }},
        {"done", [&] { pills->done(); }, 0.6,
         [&](const QImage& i) { return count(i, bright) > 10; }},
        {"error",
         [&] {
             pills->startRecording();
             pills->error();
         },
         0.3, [&](const QImage& i) { return count(i, isOrange) > 20; }},
        {"peek", [&] { pill().state().setPhase(PillPhase::peek); }, 0.3,
         [&](const QImage& i) { return count(i, bright) > 400; }},
        {"full", [&] { pill().state().openFull(); }, 0.3,
         [&](const QImage& i) { return count(i, bright) > 800; }},
    };
    for (const Case& c : cases) {
        c.enter();
        for (const double scale : {1.0, 2.0}) {
            const QImage image = shot(scale > 1 ? 0 : c.seconds, scale);
            EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << c.name << ": the corners stay clear";
            const QImage onLight = testing::over(image, kLightDesktop);
            const QImage onDark = testing::over(image, kDarkDesktop);
            EXPECT_TRUE(c.looksRight(onDark)) << c.name << " at " << scale;
            EXPECT_LT(glass(onLight).lightness(), 90)
                << c.name << ": dark glass on a light desktop";
            EXPECT_GT(glass(onDark).lightness(), kDarkDesktop.lightness())
                << c.name << ": lighter than a dark desktop";
            const QString suffix = scale > 1 ? "@2x" : "";
            testing::saveScreenshot(QString("pill-%1-light%2").arg(c.name, suffix), onLight);
            testing::saveScreenshot(QString("pill-%1-dark%2").arg(c.name, suffix), onDark);
        }
    }
}

TEST_F(PillWindowTest, WithoutACompositorTheCapsuleIsOpaqueAndCutToShape) {
    compositing = false;
    pills->startRecording();
    const QImage image = shot(0.5);
    EXPECT_TRUE(window().isOpaque());
    EXPECT_EQ(image.pixelColor(42, 15).alpha(), 255);
    const QRegion mask = window().mask();
    EXPECT_TRUE(mask.contains(QPoint(42, 15)));
    EXPECT_FALSE(mask.contains(QPoint(0, 0))) << "no black corners";
    EXPECT_FALSE(mask.contains(QPoint(83, 29)));
    testing::saveScreenshot("pill-recording-opaque", testing::over(image, kLightDesktop));
}

TEST_F(PillWindowTest, TheCardOpensOnAClickPastesARowAndChoosesTheLanguage) {
    click({24, 15});
    EXPECT_EQ(pill().state().phase(), PillPhase::full);
    queue.advance(0.5);
    const auto layout = PillCards::fullLayout(window().size());

    mouse(QEvent::MouseMove, layout.rows[1].center());
    testing::saveScreenshot("pill-full-hovered-dark", testing::over(shot(0), kDarkDesktop));
    click(layout.languages[2].center());  // "EN"
    EXPECT_EQ(runtime.settings().languageHint, "en");
    click(layout.rows[1].center());
    queue.advance(0.46);
    EXPECT_EQ(pasted, std::vector<std::string>{"Dzień dobry, przesyłam fakturę w załączniku."});
    EXPECT_EQ(pill().state().phase(), PillPhase::idle);

    pill().state().openFull();
    click(layout.close.center());
    EXPECT_EQ(pill().state().phase(), PillPhase::idle);
}

}  // namespace
}  // namespace tevra
