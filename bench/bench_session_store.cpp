// The notetaker's page reads the 50 newest sessions each time it opens. Target:
// recentSessions(50) under 20 ms with the store at its 2000-session limit and
// every session an hour-long call.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <stdexcept>
#include <string>

#include "store/history_store.h"
#include "store/session_json.h"
#include "support/temp_dir.h"

namespace {

using tevra::HistoryStore;
using tevra::Speaker;
using tevra::TranscriptLine;

// An hour of two sides: a line every 25 s from each, about 45 words a line,
// with the letters of more than one language.
std::string hourLongTranscript() {
    const std::string words =
        "so the plan for next week is that we ship the beta on Tuesday and then collect the "
        "feedback from the pilot customers zażółć gęślą jaźń before we decide whether the "
        "pricing needs another look, and Anna will send the numbers by Thursday";
    std::vector<TranscriptLine> lines;
    for (int window = 0; window < 144; ++window) {
        lines.push_back({window * 25.0, Speaker::me, words + " " + std::to_string(window)});
        lines.push_back({window * 25.0, Speaker::them, "right, " + words});
    }
    return tevra::SessionJSON::encodeTranscript(lines);
}

const char* const kItems =
    R"([{"kind":"task","title":"Send the numbers","whenText":"Thursday","speaker":"them",)"
    R"("owner":"them","confidence":0.9,"evidence":"Anna will send the numbers by Thursday"},)"
    R"({"kind":"event","title":"Beta ships","dueISO":"2026-07-14","speaker":"me","owner":"me",)"
    R"("confidence":0.8,"evidence":"we ship the beta on Tuesday"}])";

struct FullStore {
    tevra::testing::TempDir dir;
    std::string path = (dir / "weft.sqlite").string();
    HistoryStore store{path};
    size_t transcriptBytes = 0;

    FullStore() {
        const std::string transcript = hourLongTranscript();
        transcriptBytes = transcript.size();
        sqlite3* db = nullptr;
        sqlite3_open(path.c_str(), &db);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(db,
                           "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                           "WHERE i < 2000) INSERT INTO sessions(started_at,ended_at,app_name,"
                           "title,transcript_json,items_json) SELECT 1750000000 + i * 86400.0, "
                           "1750003600 + i * 86400.0, 'Zoom', 'Zoom call ' || i, ?, ? FROM n",
                           -1, &insert, nullptr);
        sqlite3_bind_text(insert, 1, transcript.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(insert, 2, kItems, -1, SQLITE_STATIC);
        sqlite3_step(insert);
        sqlite3_finalize(insert);
        sqlite3_close(db);
        if (store.recentSessions(1).empty() ||
            store.recentSessions(1)[0].transcript.size() != 288) {
            throw std::runtime_error("the sessions did not fill");
        }
    }
};

void BM_RecentSessions50At2000HourLongSessions(benchmark::State& state) {
    FullStore full;
    for (auto _ : state) {
        benchmark::DoNotOptimize(full.store.recentSessions(50));
    }
    state.counters["transcript_kb"] = static_cast<double>(full.transcriptBytes) / 1024;
}
BENCHMARK(BM_RecentSessions50At2000HourLongSessions)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

}  // namespace
