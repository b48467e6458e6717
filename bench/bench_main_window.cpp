// The main window over a full database (10,000 dictations, 2,000 sessions of
// notes), on Qt's offscreen platform: opening it as the tray's click does, from
// the reload to the first painted frame (target: under 150 ms); the Insights
// page's figures (under 20 ms) and its painting (under 30 ms).
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <QApplication>
#include <QImage>
#include <memory>
#include <stdexcept>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"
#include "support/temp_dir.h"
#include "ui/insights_page.h"
#include "ui/qt/insights_view.h"
#include "ui/qt/main_window.h"
#include "ui/ui_state.h"

namespace {

using namespace tevra;

// 10,000 dictations over the last 400 days in a dozen applications, and 2,000
// sessions with a short transcript and two items each, in one statement each.
void fill(const std::filesystem::path& database) {
    sqlite3* db = nullptr;
    sqlite3_open(database.c_str(), &db);
    const std::string now = std::to_string(HistoryRow::currentTimestamp());
    const std::string history =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i < 9999) "
        "INSERT INTO history(ts,app,raw,polished,language,duration_ms,stt_ms,polish_ms,insert_ms,"
        "words,stt_backend,polish_backend) SELECT " +
        now +
        " - i * 3456.0, 'app' || (i % 12), 'um send the the numbers ' || i, "
        "'Send the numbers ' || i || '.', 'en', 3000 + i % 700, 280, 400, 20, 5 + i % 20, "
        "'groq', CASE WHEN i % 9 = 0 THEN 'instruct-groq' ELSE 'groq' END FROM n";
    const std::string sessions =
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < 2000) "
        "INSERT INTO sessions(started_at,ended_at,app_name,title,transcript_json,items_json) "
        "SELECT " +
        now + " - i * 7200.0, " + now +
        " - i * 7200.0 + 1800, 'Zoom', 'Call ' || i, "
        "'[{\"ts\":2,\"speaker\":\"me\",\"text\":\"Send the numbers?\"},"
        "{\"ts\":5,\"speaker\":\"them\",\"text\":\"By Thursday.\"}]', "
        "'[{\"kind\":\"task\",\"title\":\"Send the numbers\",\"speaker\":\"them\","
        "\"owner\":\"them\",\"confidence\":0.9,\"evidence\":\"By Thursday.\"}]' FROM n";
    for (const std::string& sql : {history, sessions}) {
        if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(db));
        }
    }
    sqlite3_close(db);
}

struct FullWindow {
    testing::TempDir dir;
    VirtualMainQueue queue;
    std::unique_ptr<WeftRuntime> runtime;
    std::unique_ptr<UIState> state;

    FullWindow() {
        // The store makes its tables; then they are filled behind its back.
        { WeftRuntime first(dir.path(), false, nullptr); }
        fill(dir / "weft.sqlite");
        runtime = std::make_unique<WeftRuntime>(dir.path(), false, nullptr);
        UIServices services;
        services.queue = &queue;
        state = std::make_unique<UIState>(*runtime, nullptr, std::move(services));
        if (state->store()->stats().dictations != 10000 ||
            state->store()->recentSessions(2001).size() != 2000) {
            throw std::runtime_error("the database did not fill");
        }
    }
};

QImage paint(QWidget& widget) {
    QImage frame(widget.size(), QImage::Format_ARGB32_Premultiplied);
    widget.render(&frame);
    return frame;
}

// The first opening: the window made, reloaded, shown and painted.
void BM_OpenTheMainWindow(benchmark::State& state) {
    FullWindow full;
    for (auto _ : state) {
        full.state->reload();
        MainWindow window(*full.state, [] {});
        window.resize(980, 720);
        window.present();
        QApplication::processEvents();
        benchmark::DoNotOptimize(paint(window).constBits());
    }
    state.SetLabel("10,000 dictations, 2,000 sessions");
}
BENCHMARK(BM_OpenTheMainWindow)->Unit(benchmark::kMillisecond);

// A later click: the window is there; it reloads, comes to the front and paints.
void BM_ReopenTheMainWindow(benchmark::State& state) {
    FullWindow full;
    MainWindow window(*full.state, [] {});
    window.resize(980, 720);
    window.present();
    for (auto _ : state) {
        full.state->reload();
        window.present();
        QApplication::processEvents();
        benchmark::DoNotOptimize(paint(window).constBits());
    }
}
BENCHMARK(BM_ReopenTheMainWindow)->Unit(benchmark::kMillisecond);

void BM_InsightsFigures(benchmark::State& state) {
    FullWindow full;
    for (auto _ : state) {
        const InsightsPage page = InsightsPage::read(full.state->store());
        benchmark::DoNotOptimize(page.figures());
        benchmark::DoNotOptimize(page.weekColumns());
        benchmark::DoNotOptimize(page.sparkline());
    }
}
BENCHMARK(BM_InsightsFigures)->Unit(benchmark::kMillisecond);

void BM_InsightsPagePaint(benchmark::State& state) {
    FullWindow full;
    InsightsView view(*full.state);
    view.resize(780, 720);
    view.show();
    QApplication::processEvents();
    for (auto _ : state) {
        benchmark::DoNotOptimize(paint(view).constBits());
    }
}
BENCHMARK(BM_InsightsPagePaint)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
