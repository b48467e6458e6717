// WAV encoding, the multipart body and the near-silence test on a dictation
// at the length cap (180 s at 16 kHz).
#include <benchmark/benchmark.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

#include "stt/wav.h"
#include "stt/whisper_api_transcriber.h"

namespace {

// Counts the bytes allocated while a benchmark body runs, to show how many
// copies of the audio the encoding makes (the design implies two: the WAV
// image and the request body).
std::atomic<bool> counting{false};
std::atomic<size_t> allocatedBytes{0};

std::vector<int16_t> speechLike(size_t count) {
    std::vector<int16_t> samples(count);
    for (size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<int16_t>(3000.0 * std::sin(static_cast<double>(i) * 0.07));
    }
    return samples;
}

constexpr size_t kCapSamples = 180 * 16000;  // 2,880,000

void BM_WavAndMultipartBody(benchmark::State& state) {
    const auto samples = speechLike(kCapSamples);
    const std::string boundary = tevra::WhisperAPITranscriber::makeBoundary();
    size_t bytesPerRun = 0;
    for (auto _ : state) {
        allocatedBytes = 0;
        counting = true;
        const auto wav = tevra::WAV::data(samples, 16000);
        const auto body = tevra::WhisperAPITranscriber::multipartBody(
            boundary, wav, "whisper-large-v3-turbo", std::string("en"));
        counting = false;
        // Large buffers are mapped directly; everything else goes through new.
        bytesPerRun = allocatedBytes + wav.capacity() + body.capacity();
        benchmark::DoNotOptimize(body.data());
    }
    state.counters["audio_copies"] =
        static_cast<double>(bytesPerRun) / static_cast<double>(kCapSamples * 2);
}
BENCHMARK(BM_WavAndMultipartBody)->Unit(benchmark::kMillisecond);

void BM_IsNearSilent(benchmark::State& state) {
    const auto samples = speechLike(kCapSamples);
    for (auto _ : state) {
        benchmark::DoNotOptimize(tevra::WAV::isNearSilent(samples));
    }
}
BENCHMARK(BM_IsNearSilent)->Unit(benchmark::kMillisecond);

}  // namespace

// A replacement of the global allocator: malloc and free pair up here.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(size_t size) {
    if (counting.load(std::memory_order_relaxed)) {
        allocatedBytes.fetch_add(size, std::memory_order_relaxed);
    }
    if (void* p = std::malloc(size == 0 ? 1 : size)) {
        return p;
    }
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, size_t) noexcept {
    std::free(p);
}
