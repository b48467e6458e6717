// One transcription of 30 s of audio to a loopback service: the client's own
// time beside the curl command line doing the same upload (its reported
// time_total, so process start-up is not counted against curl).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "stt/wav.h"
#include "stt/whisper_api_transcriber.h"
#include "support/loopback_server.h"

namespace {

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

double curlSeconds(const std::string& url, const std::string& bodyPath,
                   const std::string& contentType) {
    const std::string cmd =
        "curl -s -o /dev/null -w '%{time_total}' -X POST -H 'Content-Type: " + contentType +
        "' -H 'Authorization: Bearer k' -H 'Expect:' " + "--data-binary @" + bodyPath + " " + url;
    FILE* pipe = popen(cmd.c_str(), "r");
    if (!pipe) {
        return NAN;
    }
    char out[64] = {0};
    const size_t n = fread(out, 1, sizeof out - 1, pipe);
    pclose(pipe);
    out[n] = '\0';
    return std::atof(out);
}

void BM_TranscribeRoundTrip30s(benchmark::State& state) {
    tevra::testing::LoopbackServer server;
    server.server().Post(
        "/v1/audio/transcriptions", [](const httplib::Request&, httplib::Response& res) {
            res.set_content(R"({"text":"ok","language":"en","duration":30.0})", "application/json");
        });
    server.start();

    std::vector<int16_t> samples(30 * 16000);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(2500.0 * std::sin(static_cast<double>(i) * 0.05));
    }
    const auto wav = tevra::WAV::data(samples, 16000);
    tevra::WhisperAPITranscriber client("bench", server.baseURL() + "/v1", "k", "m");

    const std::string boundary = tevra::WhisperAPITranscriber::makeBoundary();
    const std::string bodyPath = "/tmp/tevra-bench-body.bin";
    {
        std::ofstream(bodyPath, std::ios::binary)
            << tevra::WhisperAPITranscriber::multipartBody(boundary, wav, "m", std::nullopt);
    }
    const std::string url = server.baseURL() + "/v1/audio/transcriptions";
    const std::string contentType = "multipart/form-data; boundary=" + boundary;

    std::vector<double> clientTimes;
    std::vector<double> curlTimes;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        benchmark::DoNotOptimize(client.transcribe(wav, std::nullopt));
        const double elapsed =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        state.SetIterationTime(elapsed);
        clientTimes.push_back(elapsed);
        state.PauseTiming();
        curlTimes.push_back(curlSeconds(url, bodyPath, contentType));
        state.ResumeTiming();
    }
    std::remove(bodyPath.c_str());
    state.counters["client_ms"] = median(clientTimes) * 1000.0;
    state.counters["curl_ms"] = median(curlTimes) * 1000.0;
    state.counters["ratio"] = median(clientTimes) / median(curlTimes);
}
BENCHMARK(BM_TranscribeRoundTrip30s)
    ->UseManualTime()
    ->Iterations(30)
    ->Unit(benchmark::kMillisecond);

}  // namespace
