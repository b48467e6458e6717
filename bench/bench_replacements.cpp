// The user's replacement rules over a long dictation.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "polish/replacement.h"

namespace {

void BM_ReplacementsApply50RulesOn2000Chars(benchmark::State& state) {
    std::vector<tevra::Replacement> rules;
    for (int i = 0; i < 45; ++i) {
        rules.push_back({"term" + std::to_string(i), "Term-" + std::to_string(i), false});
    }
    for (int i = 0; i < 5; ++i) {
        rules.push_back({"(\\d+) percent" + std::to_string(i), "$1%", true});
    }
    std::string text;
    for (int i = 0; text.size() < 2000; ++i) {
        text += "so term" + std::to_string(i % 60) + " went up 12 percent today ";
    }
    text.resize(2000);
    for (auto _ : state) {
        benchmark::DoNotOptimize(tevra::Replacements::apply(text, rules));
    }
}
BENCHMARK(BM_ReplacementsApply50RulesOn2000Chars)->Unit(benchmark::kMillisecond);

}  // namespace
