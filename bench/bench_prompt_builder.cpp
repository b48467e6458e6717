// The prompt is rebuilt for every dictation, so its cost with a large
// vocabulary is paid on each request: the target is well under 1 ms.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "polish/mode_defaults.h"
#include "polish/prompt_builder.h"

namespace {

struct Vocabulary {
    std::vector<std::string> dictionary;
    std::vector<tevra::Replacement> replacements;
    std::vector<tevra::Snippet> snippets;
};

Vocabulary largeVocabulary() {
    Vocabulary v;
    for (int i = 0; i < 500; ++i) {
        v.dictionary.push_back("Phrase " + std::to_string(i) + " Łódź");
    }
    for (int i = 0; i < 200; ++i) {
        // One rule in four is a pattern, which the prompt leaves out.
        const bool isRegex = i % 4 == 0;
        v.replacements.push_back(
            {isRegex ? "(\\d+) unit" + std::to_string(i) : "spoken " + std::to_string(i),
             isRegex ? "$1 u" : "written " + std::to_string(i), isRegex});
    }
    for (int i = 0; i < 100; ++i) {
        v.snippets.push_back(
            {"trigger " + std::to_string(i), "A longer expansion for snippet " + std::to_string(i) +
                                                 ", ul. Długa 5, 00-001 Warszawa"});
    }
    return v;
}

void BM_SystemGhostwrite(benchmark::State& state) {
    const auto v = largeVocabulary();
    const auto email = tevra::ModeDefaults::seed()[2];
    for (auto _ : state) {
        auto prompt =
            tevra::PromptBuilder::system(email, v.dictionary, v.replacements, v.snippets, "Anna");
        benchmark::DoNotOptimize(prompt);
    }
}
BENCHMARK(BM_SystemGhostwrite)->Unit(benchmark::kMicrosecond);

void BM_SystemDictation(benchmark::State& state) {
    const auto v = largeVocabulary();
    for (auto _ : state) {
        auto prompt = tevra::PromptBuilder::system(v.dictionary, v.replacements, v.snippets);
        benchmark::DoNotOptimize(prompt);
    }
}
BENCHMARK(BM_SystemDictation)->Unit(benchmark::kMicrosecond);

void BM_UserWithLongField(benchmark::State& state) {
    tevra::PolishContext context;
    context.appName = "Mail";
    context.windowTitle = "Re: Oferta";
    context.tone = "formal";
    context.focusedText = std::string();
    for (int i = 0; i < 400; ++i) {
        *context.focusedText += "Dzień dobry, ";
    }
    for (auto _ : state) {
        auto prompt = tevra::PromptBuilder::user("przesyłamy ofertę", context);
        benchmark::DoNotOptimize(prompt);
    }
}
BENCHMARK(BM_UserWithLongField)->Unit(benchmark::kMicrosecond);

}  // namespace
