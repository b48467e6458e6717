// An hour-long call recorded on both sides, fast-forwarded: the microphone as
// the sound server hands it over (48 kHz stereo float, 10 ms at a time) and
// the other side as the monitor does (16 kHz mono, 100 ms at a time), both
// through the session capture into its spool files. Targets: resident memory
// after the hour under 60 MB above what it was before the call, and the
// capture's own work (conversion, spooling) under 2 % of one core in real
// time. The sound server's side of the streams is not in these figures.
// Then the hour's spool made into a session against loopback services that
// answer at once: the files are mapped, not read, so that the memory of its
// own stays small (target: under 60 MB; the mapped pages are the file's and
// go back to it).
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <atomic>
#include <cmath>
#include <fstream>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "base/virtual_main_queue.h"
#include "notetaker/session_capture.h"
#include "notetaker/spooled_session.h"
#include "polish/llm_polisher.h"
#include "store/history_store.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/main_queue_wait.h"
#include "support/recording_call_signals.h"
#include "support/scripted_microphone.h"
#include "support/temp_dir.h"

namespace {

// Kilobytes, from /proc/self/status.
double statusMB(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(field + ":", 0) == 0) {
            return std::stod(line.substr(field.size() + 1)) / 1024.0;
        }
    }
    return 0;
}

double processCpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void BM_SessionCaptureOfAnHour(benchmark::State& state) {
    const int seconds = static_cast<int>(state.range(0));
    tevra::VirtualMainQueue queue;
    tevra::testing::TempDir data;
    auto mic = tevra::testing::ScriptedMicrophone::make({48000, 2});
    auto system = tevra::testing::ScriptedSystemAudio::make();

    // 10 ms of a voice on the microphone, 100 ms of another on the speakers.
    std::vector<float> micBuffer(480 * 2);
    for (std::size_t f = 0; f < 480; ++f) {
        micBuffer[2 * f] = micBuffer[2 * f + 1] =
            0.3f * static_cast<float>(std::sin(2 * std::numbers::pi * 220.0 * f / 48000.0));
    }
    std::vector<int16_t> systemBuffer(1600);
    for (std::size_t i = 0; i < systemBuffer.size(); ++i) {
        systemBuffer[i] = static_cast<int16_t>(8000 * std::sin(2 * std::numbers::pi * i / 40.0));
    }

    double growthMB = 0;
    double afterStopMB = 0;
    double cpuShare = 0;
    for (auto _ : state) {
        const double before = statusMB("VmRSS");
        tevra::SessionCapture capture(queue, {mic->factory(), system->factory()},
                                      tevra::SessionSpool::create(data.path(), "Zoom", 1783252980),
                                      [](const std::string&) {});
        capture.start({});
        if (!tevra::testing::runMainQueueUntil(
                queue, [&] { return mic->isRunning() && system->isRunning(); }, 10)) {
            state.SkipWithError("the devices did not start");
            break;
        }
        const double cpuBefore = processCpuSeconds();
        for (int second = 0; second < seconds; ++second) {
            for (int tenth = 0; tenth < 10; ++tenth) {
                for (int buffer = 0; buffer < 10; ++buffer) {
                    mic->play(micBuffer);
                }
                system->play(systemBuffer);
            }
            queue.runPending();
        }
        growthMB = statusMB("VmRSS") - before;
        const auto result = capture.stop();
        cpuShare = (processCpuSeconds() - cpuBefore) / seconds;
        afterStopMB = statusMB("VmRSS") - before;
        if (result.systemSamples != static_cast<int64_t>(seconds) * 16000) {
            state.SkipWithError("the other side was not recorded whole");
        }
        tevra::SessionSpool::remove(result.spool);
    }
    state.counters["rss_growth_MB"] = growthMB;
    state.counters["rss_after_stop_MB"] = afterStopMB;
    state.counters["cpu_pct_of_core"] = 100 * cpuShare;
}
BENCHMARK(BM_SessionCaptureOfAnHour)->Arg(3600)->Iterations(1)->Unit(benchmark::kSecond);

// The highest of a few figures of /proc/self/status while something runs.
class StatusPeaks {
public:
    StatusPeaks()
        : thread_([this] {
              while (!done_) {
                  anon_ = std::max(anon_.load(), statusMB("RssAnon"));
                  file_ = std::max(file_.load(), statusMB("RssFile"));
                  std::this_thread::sleep_for(std::chrono::milliseconds(20));
              }
          }) {}
    ~StatusPeaks() { finish(); }
    void finish() {
        done_ = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }
    double anon() const { return anon_; }
    double file() const { return file_; }

private:
    std::atomic<bool> done_{false};
    std::atomic<double> anon_{0};
    std::atomic<double> file_{0};
    std::thread thread_;
};

void BM_ProcessASpooledHour(benchmark::State& state) {
    tevra::testing::LoopbackServer server;
    server.server().Post(
        "/v1/audio/transcriptions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"text":"so we ship the beta on Tuesday"})", "application/json");
        });
    server.server().Post(
        "/v1/chat/completions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"choices":[{"message":{"content":"{\"items\":[]}"}}]})",
                            "application/json");
        });
    server.start();
    tevra::testing::TempDir data;
    const tevra::SessionServices services{
        std::make_shared<tevra::TranscriptionRouter>(
            std::vector<std::shared_ptr<const tevra::TranscriptionBackend>>{
                tevra::WhisperAPITranscriber::kestrum(server.baseURL() + "/v1", "t", "whisper")}),
        std::nullopt,
        {std::make_shared<tevra::LLMPolisher>("chat", server.baseURL() + "/v1", "k", "m")},
        std::make_shared<tevra::HistoryStore>((data / "weft.sqlite").string())};

    std::vector<int16_t> minute(60 * 16000);
    for (std::size_t i = 0; i < minute.size(); ++i) {
        minute[i] = static_cast<int16_t>(2500.0 * std::sin(static_cast<double>(i) * 0.05));
    }
    double anonGrowth = 0;
    double fileGrowth = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto folder = tevra::SessionSpool::create(data.path(), "Zoom", 1783252980);
        for (const auto& file : {folder.mic(), folder.system()}) {
            tevra::SpoolWriter writer(file, 16000);
            for (int m = 0; m < 60; ++m) {
                writer.append(minute);
            }
        }
        const double anonBefore = statusMB("RssAnon");
        const double fileBefore = statusMB("RssFile");
        state.ResumeTiming();
        StatusPeaks peaks;
        const auto id = tevra::SpooledSession::process(
            services, folder, [] { return 1783256580.0; }, [](const std::string&) {});
        peaks.finish();
        if (!id) {
            state.SkipWithError("the session was not saved");
        }
        anonGrowth = peaks.anon() - anonBefore;
        fileGrowth = peaks.file() - fileBefore;
    }
    state.counters["peak_anon_growth_MB"] = anonGrowth;
    state.counters["peak_mapped_file_MB"] = fileGrowth;
}
BENCHMARK(BM_ProcessASpooledHour)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
