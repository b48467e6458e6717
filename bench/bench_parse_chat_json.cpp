// Cleaning a long model reply sits between the answer and the paste; a 20 KB
// reply should cost well under half a millisecond.
#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <string>

#include "polish/llm_polisher.h"

namespace {

constexpr std::size_t kReplyBytes = 20 * 1024;

// Mixed ASCII and Polish text, so that the decoder and the trims meet
// multi-byte characters as they do in real replies.
std::string replyText() {
    const std::string line =
        "Zażółć gęślą jaźń, a potem wyślij raport do zespołu przed piątkiem.\n";
    std::string text;
    while (text.size() + line.size() < kReplyBytes) {
        text += line;
    }
    return text;
}

std::string completion(const std::string& content) {
    const nlohmann::json body = {
        {"id", "chatcmpl-bench"},
        {"object", "chat.completion"},
        {"choices",
         nlohmann::json::array({{{"index", 0},
                                 {"message", {{"role", "assistant"}, {"content", content}}},
                                 {"finish_reason", "stop"}}})},
        {"usage", {{"prompt_tokens", 812}, {"completion_tokens", 6144}}},
    };
    return body.dump();
}

void runParse(benchmark::State& state, const std::string& body) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(tevra::LLMPolisher::parseChatJSON(body));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(body.size()));
}

void BM_ParseChatJSON_Plain(benchmark::State& state) {
    runParse(state, completion("  " + replyText() + "  "));
}
BENCHMARK(BM_ParseChatJSON_Plain)->Unit(benchmark::kMicrosecond);

// The slowest path: a tagged fence around a quoted reply, so every cleaning
// step does its work.
void BM_ParseChatJSON_FencedQuoted(benchmark::State& state) {
    runParse(state, completion("```markdown\n\"" + replyText() + "\"\n```"));
}
BENCHMARK(BM_ParseChatJSON_FencedQuoted)->Unit(benchmark::kMicrosecond);

}  // namespace
