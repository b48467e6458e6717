// What a log line costs its caller: the hand-over to the "tevra.log" queue.
// Target: under 10 µs per call. The file work happens on the queue and is kept
// out of the timing by draining the queue every few thousand lines.
#include <benchmark/benchmark.h>

#include <string>

#include "base/log.h"
#include "support/temp_dir.h"

namespace {

constexpr int linesBetweenDrains = 4096;

tevra::testing::TempDir& benchDir() {
    static tevra::testing::TempDir dir;
    return dir;
}

tevra::Logger& sharedLogger() {
    static tevra::Logger logger(benchDir() / "logger");
    return logger;
}

const std::string message = "capture: finished after 3.42 s, 54720 samples, pill done";

void BM_LoggerWriteHandOver(benchmark::State& state) {
    tevra::Logger& log = sharedLogger();
    int sinceDrain = 0;
    for (auto _ : state) {
        log.write(message);
        if (++sinceDrain == linesBetweenDrains) {
            state.PauseTiming();
            log.flush();
            sinceDrain = 0;
            state.ResumeTiming();
        }
    }
    log.flush();
}
BENCHMARK(BM_LoggerWriteHandOver)->Unit(benchmark::kMicrosecond)->Iterations(200000);

// Several threads at once, while the queue writes the file: no pauses (they
// serialise threads), and a fixed count that bounds the queued backlog.
void BM_LoggerWriteHandOverContended(benchmark::State& state) {
    tevra::Logger& log = sharedLogger();
    for (auto _ : state) {
        log.write(message);
    }
    if (state.thread_index() == 0) {
        log.flush();
    }
}
BENCHMARK(BM_LoggerWriteHandOverContended)
    ->Unit(benchmark::kMicrosecond)
    ->Threads(4)
    ->Iterations(20000);

// The process log adds the look-up of the current logger.
void BM_LogWriteHandOver(benchmark::State& state) {
    tevra::Log::configure(benchDir() / "process");
    int sinceDrain = 0;
    for (auto _ : state) {
        tevra::Log::write(message);
        if (++sinceDrain == linesBetweenDrains) {
            state.PauseTiming();
            tevra::Log::flush();
            sinceDrain = 0;
            state.ResumeTiming();
        }
    }
    tevra::Log::flush();
}
BENCHMARK(BM_LogWriteHandOver)->Unit(benchmark::kMicrosecond)->Iterations(200000);

}  // namespace
