// Judging a long extraction reply: parse, merge the repeats, drop the weak.
// Target: under 5 ms for a reply of 200 items.
#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <string>

#include "notetaker/capture_extraction.h"

namespace {

// 200 items as a model writes them, fenced: tasks, events with dates and
// times, notes, each title of its own words; every fifth repeats an earlier
// one in other words, and some are too weak to keep. Few merges make the
// most comparisons.
std::string reply200() {
    const char* const verbs[] = {"Send",  "Review", "Call",  "Book", "Prepare", "Check",
                                 "Draft", "Order",  "Email", "Plan", "Fix",     "Ask"};
    const char* const things[] = {"report",   "contract", "flights", "budget",  "release", "venue",
                                  "landlord", "invoice",  "slides",  "roadmap", "hiring",  "demo",
                                  "backups",  "pricing",  "survey",  "offsite", "laptops"};
    const char* const people[] = {"Anna", "Piotr", "Mei",   "Linh",   "Oskar", "Zofia", "Tomasz",
                                  "Hugo", "Ines",  "Jakub", "Wiktor", "Lena",  "Marta"};
    nlohmann::json items = nlohmann::json::array();
    for (int i = 0; i < 200; ++i) {
        const bool repeat = i % 5 == 4;
        const int n = repeat ? i - 3 : i;
        const std::string title = std::string(verbs[n % 12]) + " the " + things[n % 17] + " with " +
                                  people[n % 13] + (repeat ? " please" : "");
        nlohmann::json item = {{"kind", n % 3 == 0   ? "task"
                                        : n % 3 == 1 ? "event"
                                                     : "note"},
                               {"title", title},
                               {"detail", i % 2 ? nlohmann::json(nullptr) : "as agreed"},
                               {"when", "next Friday"},
                               {"due", "2026-07-" + std::to_string(10 + i % 18)},
                               {"time", i % 4 ? "09:30" : "24:00"},
                               {"speaker", i % 2 ? "them" : "me"},
                               {"confidence", i % 11 == 0 ? "0.3" : "0.85"},
                               {"evidence", "we said we would " + title}};
        if (i % 3 == 0) {
            item["owner"] = "them";
        }
        items.push_back(item);
    }
    return "Here are the items:\n```json\n" + nlohmann::json{{"items", items}}.dump(2) + "\n```";
}

void BM_JudgeA200ItemReply(benchmark::State& state) {
    using namespace tevra::CaptureExtraction;
    const std::string reply = reply200();
    size_t kept = 0;
    for (auto _ : state) {
        kept = keep(consolidate(parse(reply))).size();
        benchmark::DoNotOptimize(kept);
    }
    state.counters["kept"] = static_cast<double>(kept);
    state.counters["reply_kb"] = static_cast<double>(reply.size()) / 1024;
}
BENCHMARK(BM_JudgeA200ItemReply)->Unit(benchmark::kMillisecond);

}  // namespace
