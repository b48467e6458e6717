// What the recording pill costs the processor: one frame of its meter (the
// step of the animation and the painting of the panel), on Qt's offscreen
// platform, as dark glass and as the opaque capsule, at one and two times the
// scale. The meter runs at 60 frames a second, so the share of a core is the
// frame's time times 60 (target: under 3 % with what the window system adds;
// scripts/measure-idle measures the running program).
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <ctime>
#include <memory>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "pill/pill_manager.h"
#include "pill/pill_metrics.h"
#include "pill/qt/pill_window.h"
#include "pill/qt/qt_pill_desktop.h"
#include "support/temp_dir.h"

namespace {

using namespace tevra;

void BM_RecordingPillFrame(benchmark::State& state) {
    const bool glass = state.range(0) == 1;
    const double scale = static_cast<double>(state.range(1));
    VirtualMainQueue queue;
    testing::TempDir data;
    WeftRuntime runtime(data.path(), false, nullptr);
    auto pills =
        PillManager::create(queue, runtime, nullptr,
                            std::make_shared<QtPillDesktop>(queue, [glass] { return glass; }), {});
    pills->show();
    pills->startRecording();
    pills->updateLevel(0.7);
    queue.advance(0.5);
    auto& window = dynamic_cast<PillWindow&>(pills->controllers().at(0)->panel());
    QImage frame(window.size() * scale, QImage::Format_ARGB32_Premultiplied);
    frame.setDevicePixelRatio(scale);
    const std::clock_t started = std::clock();
    for (auto _ : state) {
        queue.advance(PillMetrics::meterFrameInterval);
        frame.fill(Qt::transparent);
        window.render(&frame, QPoint(), QRegion(), QWidget::DrawChildren);
        benchmark::DoNotOptimize(frame.constBits());
    }
    // The processor time of a frame, times 60 frames, in percent of a second.
    const double cpuSeconds = static_cast<double>(std::clock() - started) / CLOCKS_PER_SEC;
    state.counters["core_percent_at_60_fps"] =
        cpuSeconds / static_cast<double>(state.iterations()) * 60 * 100;
    state.SetLabel(std::string(glass ? "glass" : "opaque") + (scale > 1 ? " @2x" : " @1x"));
}
BENCHMARK(BM_RecordingPillFrame)->Args({1, 1})->Args({1, 2})->Args({0, 1})->Args({0, 2});

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The offscreen platform's complaints about window masks are no figures.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
