// The selection tool's reading order for a full screen of words: 3000 words
// in three columns of 100 lines, read alone and with the screen's windows.
// Target: under 5 ms.
#include <benchmark/benchmark.h>

#include "screen_text/selection_state.h"
#include "screen_text/word_selection.h"

namespace {

using namespace tevra;

std::vector<OCRWord> screenOfWords() {
    std::vector<OCRWord> words;
    for (int column = 0; column < 3; ++column) {
        for (int line = 0; line < 100; ++line) {
            for (int k = 0; k < 10; ++k) {
                words.push_back(
                    {"word" + std::to_string(k),
                     Rect{column * 0.34 + k * 0.03, 0.99 - line * 0.0098, 0.025, 0.007}});
            }
        }
    }
    return words;
}

void BM_ReadingOrderColumns(benchmark::State& state) {
    const auto words = screenOfWords();
    for (auto _ : state) {
        benchmark::DoNotOptimize(WordSelection::readingOrderColumns(words));
    }
    state.counters["words"] = static_cast<double>(words.size());
}
BENCHMARK(BM_ReadingOrderColumns)->Unit(benchmark::kMillisecond);

void BM_ReadingOrderColumnsInWindows(benchmark::State& state) {
    const auto words = screenOfWords();
    const std::vector<Rect> windows = {{0, 0, 0.34, 1}, {0.34, 0, 0.34, 1}, {0.6, 0.2, 0.4, 0.7}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(WordSelection::readingOrderColumns(words, windows));
    }
}
BENCHMARK(BM_ReadingOrderColumnsInWindows)->Unit(benchmark::kMillisecond);

// What the overlay does when the words arrive, and on each pointer move.
void BM_OverlayStateAndHover(benchmark::State& state) {
    const auto words = screenOfWords();
    for (auto _ : state) {
        SelectionState overlay(1920, 1080, words, {});
        for (int y = 0; y < 1080; y += 54) {
            overlay.mouseMoved({900, static_cast<double>(y)});
        }
        benchmark::DoNotOptimize(overlay.hoverLine());
    }
}
BENCHMARK(BM_OverlayStateAndHover)->Unit(benchmark::kMillisecond);

}  // namespace
