// Processing an hour-long call of two streams against loopback services that
// answer at once. The figure is the processing's own time (cutting windows,
// the silence test, WAV encoding, assembly, the store): the time spent inside
// the speech and chat clients is measured apart and taken off. Targets: under
// 300 ms of its own, and resident memory during it under 2.5 times the audio.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <string>
#include <vector>

#include "notetaker/session_processor.h"
#include "polish/llm_polisher.h"
#include "store/history_store.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"
#include "support/temp_dir.h"

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<int64_t> clientNanoseconds{0};

template <typename F>
auto timed(F&& call) {
    const auto start = Clock::now();
    struct Add {
        Clock::time_point start;
        ~Add() {
            clientNanoseconds +=
                std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count();
        }
    } add{start};
    return call();
}

class TimedTranscriber : public tevra::TranscriptionBackend {
public:
    explicit TimedTranscriber(std::shared_ptr<const tevra::TranscriptionBackend> inner)
        : inner_(std::move(inner)) {}
    std::string name() const override { return inner_->name(); }
    tevra::Transcript transcribe(std::string_view wav,
                                 const std::optional<std::string>& hint) const override {
        return timed([&] { return inner_->transcribe(wav, hint); });
    }

private:
    std::shared_ptr<const tevra::TranscriptionBackend> inner_;
};

class TimedPolisher : public tevra::PolishBackend {
public:
    explicit TimedPolisher(std::shared_ptr<const tevra::PolishBackend> inner)
        : inner_(std::move(inner)) {}
    std::string name() const override { return inner_->name(); }
    std::string polish(const std::string& t, const tevra::PolishContext& c,
                       const std::vector<std::string>& d, const std::vector<tevra::Replacement>& r,
                       const std::vector<tevra::Snippet>& s) const override {
        return inner_->polish(t, c, d, r, s);
    }
    using PolishBackend::compose;
    std::string compose(const std::string& system, const std::string& user,
                        double temperature) const override {
        return timed([&] { return inner_->compose(system, user, temperature); });
    }

private:
    std::shared_ptr<const tevra::PolishBackend> inner_;
};

// Kilobytes, from /proc/self/status.
long statusKB(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(field + ":", 0) == 0) {
            return std::stol(line.substr(field.size() + 1));
        }
    }
    return -1;
}

// Speech all the way through: every window of both sides is sent.
std::vector<int16_t> hourOfSpeech(double frequency) {
    std::vector<int16_t> samples(60 * 60 * tevra::SessionProcessor::sampleRate);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(2500.0 * std::sin(static_cast<double>(i) * frequency));
    }
    return samples;
}

void BM_ProcessAnHourOfTwoStreams(benchmark::State& state) {
    tevra::testing::LoopbackServer server;
    server.server().Post(
        "/v1/audio/transcriptions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"text":"so we ship the beta on Tuesday"})", "application/json");
        });
    server.server().Post(
        "/v1/chat/completions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(
                R"({"choices":[{"message":{"content":"{\"items\":[{\"kind\":\"event\",)"
                R"(\"title\":\"Beta ships\",\"due\":\"2026-07-14\",\"confidence\":0.9}]}"}}]})",
                "application/json");
        });
    server.start();

    tevra::testing::TempDir dir;
    const tevra::SessionServices services{
        std::make_shared<tevra::TranscriptionRouter>(
            std::vector<std::shared_ptr<const tevra::TranscriptionBackend>>{
                std::make_shared<TimedTranscriber>(tevra::WhisperAPITranscriber::kestrum(
                    server.baseURL() + "/v1", "t", "whisper"))}),
        std::nullopt,
        {std::make_shared<TimedPolisher>(
            std::make_shared<tevra::LLMPolisher>("chat", server.baseURL() + "/v1", "k", "m"))},
        std::make_shared<tevra::HistoryStore>((dir / "weft.sqlite").string())};
    const tevra::SessionProcessor processor(services);

    const std::vector<int16_t> mic = hourOfSpeech(0.05);
    const std::vector<int16_t> system = hourOfSpeech(0.07);
    const double audioMB =
        static_cast<double>((mic.size() + system.size()) * sizeof(int16_t)) / (1024.0 * 1024.0);
    double totalSeconds = 0;
    double peakMB = 0;
    size_t lines = 0;
    for (auto _ : state) {
        std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts again from here
        clientNanoseconds = 0;
        const auto start = Clock::now();
        const auto result = processor.process("Zoom", 1783252980, mic, system);
        const double total = std::chrono::duration<double>(Clock::now() - start).count();
        lines = result.session.transcript.size();
        totalSeconds += total;
        peakMB = std::max(peakMB, static_cast<double>(statusKB("VmHWM")) / 1024.0);
        state.SetIterationTime(total - static_cast<double>(clientNanoseconds.load()) / 1e9);
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.counters["total_ms"] = totalSeconds * 1000 / static_cast<double>(state.iterations());
    state.counters["audio_mb"] = audioMB;
    state.counters["peak_rss_mb"] = peakMB;
    state.counters["rss_per_audio"] = peakMB / audioMB;
}
BENCHMARK(BM_ProcessAnHourOfTwoStreams)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
