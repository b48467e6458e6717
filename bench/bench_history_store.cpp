// The history database at its retention limit: the add that prunes, the reads
// of the pill and the insights page. The store works on its own queue thread,
// so the figures are wall time and the CPU time of the whole process.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>

#include "store/history_store.h"
#include "support/temp_dir.h"

namespace {

using tevra::HistoryRow;
using tevra::HistoryStore;

constexpr double kNow = 1'750'000'000.0;

// A full history: 10,000 dictations over the last 400 days, with a few days
// left out so that streaks break, written in one transaction.
void fillHistory(const std::string& path) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    const std::string sql =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i < 20000) "
        "INSERT INTO history(ts,app,raw,polished,language,duration_ms,stt_ms,polish_ms,"
        "insert_ms,words,stt_backend,polish_backend) "
        "SELECT " +
        std::to_string(kNow) +
        " - (i * 3456.0), 'app' || (i % 12), "
        "'so i was thinking we could move the meeting to thursday afternoon ' || i, "
        "'So I was thinking we could move the meeting to Thursday afternoon ' || i || '.', "
        "'en', 4200 + i % 900, 300, 450, 20, 12 + i % 30, 'groq', 'openai' "
        "FROM n WHERE (i / 25) % 17 <> 5 LIMIT " +
        std::to_string(HistoryStore::maxHistoryRows);
    sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

struct FullStore {
    tevra::testing::TempDir dir;
    std::string path = (dir / "weft.sqlite").string();
    HistoryStore store{path, [] { return kNow; }};

    FullStore() {
        fillHistory(path);
        if (store.stats().dictations != HistoryStore::maxHistoryRows) {
            throw std::runtime_error("the history did not fill");
        }
    }
};

void BM_AddAtTheRetentionLimit(benchmark::State& state) {
    FullStore full;
    double ts = kNow;
    for (auto _ : state) {
        full.store.add(HistoryRow{.ts = ts += 1.0,
                                  .app = "org.mozilla.firefox",
                                  .raw = "please send the report by friday",
                                  .polished = "Please send the report by Friday.",
                                  .language = "en",
                                  .durationMs = 2300,
                                  .sttMs = 280,
                                  .polishMs = 390,
                                  .insertMs = 25,
                                  .words = 6,
                                  .sttBackend = "groq",
                                  .polishBackend = "openai"});
    }
    state.counters["rows"] = static_cast<double>(full.store.stats().dictations);
}
BENCHMARK(BM_AddAtTheRetentionLimit)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_InsightsPageOver10000Rows(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.insightsSummary());
        benchmark::DoNotOptimize(full.store.dailyActivity(120));
        benchmark::DoNotOptimize(full.store.activityStreaks());
    }
}
BENCHMARK(BM_InsightsPageOver10000Rows)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_InsightsSummaryOver10000Rows(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.insightsSummary());
    }
}
BENCHMARK(BM_InsightsSummaryOver10000Rows)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_DailyActivity120Over10000Rows(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.dailyActivity(120));
    }
}
BENCHMARK(BM_DailyActivity120Over10000Rows)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_ActivityStreaksOver10000Rows(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.activityStreaks());
    }
}
BENCHMARK(BM_ActivityStreaksOver10000Rows)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void BM_Recent12Over10000Rows(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.recent(12));
    }
}
BENCHMARK(BM_Recent12Over10000Rows)
    ->Unit(benchmark::kMicrosecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
