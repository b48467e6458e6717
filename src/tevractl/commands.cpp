#include "tevractl/commands.h"

#include <ctime>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "core/pipeline.h"
#include "core/weft_runtime.h"
#include "polish/mode_defaults.h"
#include "store/history_store.h"
#include "store/insights_format.h"
#include "stt/wav.h"
#include "stt/wav_reader.h"
#include "tevractl/options.h"

namespace tevra::ctl {

int usage(const std::string& command, const std::string& message, std::ostream& err) {
    err << "tevractl " << command << ": " << message << "\n\n" << helpFor(command);
    return 2;
}

std::optional<std::string> readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return std::nullopt;
    }
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

namespace {

// The same error and status in every output form, so that a script can tell a
// missing history from an empty one.
int noDatabase(const std::string& command, std::ostream& err) {
    err << "tevractl " << command << ": the history database could not be opened\n";
    return 1;
}

// The enabled voice in a slot: from the store, or the built-in table without one.
std::optional<Mode> voiceFor(const WeftRuntime& runtime, int64_t slot) {
    if (runtime.store()) {
        return runtime.store()->mode(slot);
    }
    for (const Mode& mode : ModeDefaults::seed()) {
        if (mode.slot == slot && mode.enabled) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string localTime(double ts) {
    const auto seconds = static_cast<std::time_t>(ts);
    std::tm tm{};
    localtime_r(&seconds, &tm);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", &tm);
    return text;
}

}  // namespace

int dictate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("dictate", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {"--mode"}, {});
        if (p.positional.size() != 1) {
            throw UsageError{"give exactly one WAV file"};
        }
        const std::string& path = p.positional[0];
        const int64_t slot =
            p.values.contains("--mode") ? parseNumber("--mode", p.values.at("--mode")) : 0;

        const auto bytes = readFile(path);
        if (!bytes) {
            err << "tevractl dictate: cannot read " << path << "\n";
            return 2;
        }
        auto decoded = WAV::readPCM16(*bytes);
        if (const auto* problem = std::get_if<std::string>(&decoded)) {
            err << "tevractl dictate: " << path << ": " << *problem << "\n";
            return 2;
        }
        const auto& pcm = std::get<WAV::PCM16>(decoded);
        const auto mode = voiceFor(runtime, slot);
        if (!mode) {
            err << "tevractl dictate: no enabled voice in slot " << slot << "\n";
            return 2;
        }

        PolishContext context;
        context.appName = "tevractl";
        try {
            const DictationResult result =
                runtime.pipeline()->runMode(*mode, pcm.samples, pcm.sampleRate, context);
            out << result.polished << "\n";
            return 0;
        } catch (const PipelineError& e) {
            err << e.description() << "\n";
            return 1;
        } catch (const std::exception& e) {
            err << describe(e) << "\n";
            const auto kept = runtime.saveFailedAudio(WAV::data(pcm.samples, pcm.sampleRate));
            if (kept) {
                err << "The recording was kept in " << kept->string() << "\n";
            } else {
                err << "The recording could not be kept; the original is still " << path << "\n";
            }
            return 1;
        }
    });
}

int translate(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("translate", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {"--to"}, {});
        if (p.positional.size() != 1) {
            throw UsageError{"give the text to translate as one argument (quote it)"};
        }
        const std::string target =
            p.values.contains("--to") ? p.values.at("--to") : runtime.settings().translateTarget;
        try {
            out << runtime.pipeline()->translate(p.positional[0], target) << "\n";
            return 0;
        } catch (const std::exception& e) {
            err << describe(e) << "\n";
            return 1;
        }
    });
}

int history(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("history", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {"--limit"}, {"--json"});
        if (!p.positional.empty()) {
            throw UsageError{"unexpected argument " + p.positional[0]};
        }
        const int64_t limit =
            p.values.contains("--limit") ? parseNumber("--limit", p.values.at("--limit")) : 20;
        if (!runtime.store()) {
            return noDatabase("history", err);
        }
        const auto rows = runtime.store()->recent(limit);
        if (p.flags.contains("--json")) {
            nlohmann::ordered_json list = nlohmann::ordered_json::array();
            for (const auto& r : rows) {
                list.push_back({{"id", r.id},
                                {"ts", r.ts},
                                {"app", r.app},
                                {"raw", r.raw},
                                {"polished", r.polished},
                                {"language", r.language ? nlohmann::ordered_json(*r.language)
                                                        : nlohmann::ordered_json(nullptr)},
                                {"durationMs", r.durationMs},
                                {"sttMs", r.sttMs},
                                {"polishMs", r.polishMs},
                                {"insertMs", r.insertMs},
                                {"words", r.words},
                                {"sttBackend", r.sttBackend},
                                {"polishBackend", r.polishBackend}});
            }
            out << list.dump(2) << "\n";
            return 0;
        }
        for (const auto& r : rows) {
            out << localTime(r.ts) << "  " << r.app << "  " << r.words << " words  " << r.sttBackend
                << " / " << r.polishBackend << "\n  " << r.polished << "\n";
        }
        return 0;
    });
}

int stats(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("stats", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {}, {"--json"});
        if (!p.positional.empty()) {
            throw UsageError{"unexpected argument " + p.positional[0]};
        }
        const auto& store = runtime.store();
        if (!store) {
            return noDatabase("stats", err);
        }
        const InsightsSummary summary = store->insightsSummary();
        const ActivityStreaks streaks = store->activityStreaks();
        const auto apps = store->perAppUsage(10);
        if (p.flags.contains("--json")) {
            nlohmann::ordered_json perApp = nlohmann::ordered_json::array();
            for (const auto& a : apps) {
                perApp.push_back(
                    {{"app", a.app}, {"dictations", a.dictations}, {"words", a.words}});
            }
            const nlohmann::ordered_json all = {
                {"totalWords", summary.totalWords},
                {"totalDictations", summary.totalDictations},
                {"avgWPM", summary.avgWPM},
                {"fixesApplied", summary.fixesApplied},
                {"avgLatencyMs", summary.avgLatencyMs},
                {"timeSavedMinutes", summary.timeSavedMinutes},
                {"streaks", {{"current", streaks.current}, {"longest", streaks.longest}}},
                {"perApp", perApp}};
            out << all.dump(2) << "\n";
            return 0;
        }
        out << "Words          " << InsightsFormat::grouped(summary.totalWords) << "\n"
            << "Dictations     " << InsightsFormat::grouped(summary.totalDictations) << "\n"
            << "Speaking speed " << summary.avgWPM << " words per minute\n"
            << "Fixes applied  " << InsightsFormat::grouped(summary.fixesApplied) << "\n"
            << "Latency        " << InsightsFormat::speed(summary.avgLatencyMs) << "\n"
            << "Time saved     " << InsightsFormat::hoursMinutes(summary.timeSavedMinutes) << "\n"
            << "Streak         " << streaks.current << " days (longest " << streaks.longest
            << ")\n";
        if (!apps.empty()) {
            out << "Applications\n";
            for (const auto& a : apps) {
                out << "  " << a.app << "  " << InsightsFormat::grouped(a.words) << " words in "
                    << a.dictations << " dictations\n";
            }
        }
        return 0;
    });
}

int keys(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("keys", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {}, {});
        if (!p.positional.empty()) {
            throw UsageError{"unexpected argument " + p.positional[0]};
        }
        out << runtime.keyStatusDescription() << "\n";
        if (runtime.proxyToken() && !runtime.proxyToken()->empty()) {
            out << "relay: \u2713\n";
        }
        return 0;
    });
}

}  // namespace tevra::ctl
