// tevractl notes: the notetaker without the desktop. A recording becomes a
// session through the very processing the desktop runs after a call, on the
// same runtime, keys and store.
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <variant>

#include "base/iso8601.h"
#include "capture/audio_resampler.h"
#include "core/weft_runtime.h"
#include "notetaker/notetaker_format.h"
#include "notetaker/session_processor.h"
#include "store/history_row.h"
#include "store/history_store.h"
#include "store/session_json.h"
#include "stt/wav_reader.h"
#include "tevractl/commands.h"
#include "tevractl/notes_detail.h"
#include "tevractl/options.h"

namespace tevra::ctl {
namespace {

// A problem with an input file: said on stderr, status 2.
struct InputError {
    std::string message;
};

// No database: said on stderr, status 1, whatever the output form.
struct NoStore {};

HistoryStore& storeOf(WeftRuntime& runtime) {
    if (!runtime.store()) {
        throw NoStore{};
    }
    return *runtime.store();
}

std::vector<int16_t> to16kHz(WAV::PCM16 pcm) {
    constexpr auto rate = static_cast<int>(SessionProcessor::sampleRate);
    if (pcm.sampleRate == rate) {
        return std::move(pcm.samples);
    }
    if (!AudioResampler::supports(static_cast<int>(pcm.sampleRate), 1)) {
        throw InputError{"a sample rate of " + std::to_string(pcm.sampleRate) +
                         " Hz cannot be converted"};
    }
    AudioResampler resampler(static_cast<int>(pcm.sampleRate), 1, rate);
    std::vector<int16_t> out;
    out.reserve(static_cast<size_t>(static_cast<double>(pcm.samples.size()) * rate /
                                    static_cast<double>(pcm.sampleRate)) +
                16);
    std::vector<float> block;
    constexpr size_t kBlock = 65536;
    for (size_t at = 0; at < pcm.samples.size(); at += kBlock) {
        const size_t n = std::min(kBlock, pcm.samples.size() - at);
        block.resize(n);
        for (size_t i = 0; i < n; ++i) {
            block[i] = static_cast<float>(pcm.samples[at + i]) / 32767.0f;
        }
        resampler.process(block.data(), n, out);
    }
    return out;
}

// The first channel of a 16-bit PCM WAV file, at 16 kHz.
std::vector<int16_t> loadRecording(const std::string& path) {
    std::variant<WAV::PCM16, std::string> decoded;
    {
        const auto bytes = readFile(path);
        if (!bytes) {
            throw InputError{"cannot read " + path};
        }
        decoded = WAV::readPCM16(*bytes);
    }
    if (const auto* problem = std::get_if<std::string>(&decoded)) {
        throw InputError{path + ": " + *problem};
    }
    try {
        return to16kHz(std::move(std::get<WAV::PCM16>(decoded)));
    } catch (const InputError& e) {
        throw InputError{path + ": " + e.message};
    }
}

int64_t sessionId(const Parsed& p) {
    if (p.positional.size() != 1) {
        throw UsageError{"give one session id"};
    }
    return parseNumber("the session id", p.positional[0]);
}

void rejectPositional(const Parsed& p) {
    if (!p.positional.empty()) {
        throw UsageError{"unexpected argument " + p.positional[0]};
    }
}

// "transcribing 3/12…" on one line of the terminal, rewritten in place.
SessionProcessor::ProgressHandler terminalProgress(std::ostream& err) {
    if (::isatty(STDERR_FILENO) != 1) {
        return {};
    }
    return [&err](const SessionProgress& progress) {
        if (progress.stage == SessionProgress::Stage::transcribing) {
            err << "\rtranscribing " << progress.done + 1 << "/" << progress.total << "\u2026"
                << std::flush;
        } else {
            err << "\r\033[Kextracting items\u2026" << std::flush;
        }
    };
}

int process(WeftRuntime& runtime, const Parsed& p, std::ostream& out, std::ostream& err) {
    rejectPositional(p);
    if (!p.values.contains("--mic")) {
        throw UsageError{"give the microphone's recording with --mic"};
    }
    std::optional<double> started;
    if (p.values.contains("--started")) {
        started = parseISO8601(p.values.at("--started"));
        if (!started) {
            throw UsageError{"--started takes a date and time such as 2026-07-05T14:03:00+02:00"};
        }
    }
    const std::vector<int16_t> mic = loadRecording(p.values.at("--mic"));
    const std::vector<int16_t> system = p.values.contains("--system")
                                            ? loadRecording(p.values.at("--system"))
                                            : std::vector<int16_t>{};
    storeOf(runtime);  // without a store the session would be lost: no work for nothing

    // The call ended as the recording did; without --started, that is now.
    const double length = static_cast<double>(std::max(mic.size(), system.size())) /
                          static_cast<double>(SessionProcessor::sampleRate);
    const double now = HistoryRow::currentTimestamp();
    const double startedAt = started.value_or(now - length);
    const double shift = startedAt + length - now;
    const SessionProcessor processor(SessionServices::from(runtime),
                                     [shift] { return HistoryRow::currentTimestamp() + shift; });
    const std::string app = p.values.contains("--app") ? p.values.at("--app") : "Notes";
    const auto progress = terminalProgress(err);
    const ProcessedSession result = processor.process(app, startedAt, mic, system, progress);
    if (progress) {
        err << "\r\033[K" << std::flush;
    }

    if (!result.id) {
        err << "tevractl notes process: the session could not be saved\n";
        return 1;
    }
    if (p.flags.contains("--json")) {
        out << SessionJSON::encodeSession(result.session, 2) << "\n";
    } else {
        printSessionDetail(result.session, out);
        out << "\nsaved as session " << *result.id << "\n";
    }
    if (result.failedWindows > 0) {
        err << result.failedWindows
            << " of the recording's windows could not be transcribed: " << result.lastWindowFailure
            << "\n";
    }
    if (result.extractionFailure) {
        err << *result.extractionFailure << "\n";
    }
    return result.failedWindows > 0 || result.extractionFailure ? 1 : 0;
}

int list(WeftRuntime& runtime, const Parsed& p, std::ostream& out) {
    rejectPositional(p);
    const int64_t limit =
        p.values.contains("--limit") ? parseNumber("--limit", p.values.at("--limit")) : 50;
    const auto sessions = storeOf(runtime).recentSessions(limit);
    if (p.flags.contains("--json")) {
        nlohmann::ordered_json all = nlohmann::ordered_json::array();
        for (const NoteSession& session : sessions) {
            all.push_back(SessionJSON::toJSON(session));
        }
        out << all.dump(2) << "\n";
        return 0;
    }
    for (const NoteSession& session : sessions) {
        printSessionLine(session, out);
    }
    return 0;
}

int show(WeftRuntime& runtime, const Parsed& p, std::ostream& out, std::ostream& err) {
    const int64_t id = sessionId(p);
    if (p.flags.contains("--json") && p.flags.contains("--transcript")) {
        throw UsageError{"choose one of --json and --transcript"};
    }
    const auto session = storeOf(runtime).session(id);
    if (!session) {
        err << "tevractl notes show: no session " << id << "\n";
        return 1;
    }
    if (p.flags.contains("--json")) {
        out << SessionJSON::encodeSession(*session, 2) << "\n";
    } else if (p.flags.contains("--transcript")) {
        out << NotetakerFormat::transcriptText(*session);  // exactly the clipboard's text
    } else {
        printSessionDetail(*session, out);
    }
    return 0;
}

int remove(WeftRuntime& runtime, const Parsed& p, std::ostream& err) {
    const int64_t id = sessionId(p);
    HistoryStore& store = storeOf(runtime);
    if (!store.session(id)) {
        err << "tevractl notes delete: no session " << id << "\n";
        return 1;
    }
    store.deleteSession(id);
    return 0;
}

}  // namespace

int notes(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    if (args.empty() || wantsHelp(args)) {
        out << helpFor("notes");
        return args.empty() ? 2 : 0;
    }
    const std::string& sub = args[0];
    const Args rest(args.begin() + 1, args.end());
    try {
        if (sub != "process" && sub != "list" && sub != "show" && sub != "delete") {
            throw UsageError{"unknown notes command \"" + sub + "\""};
        }
        const Parsed p = sub == "process"
                             ? parse(rest, {"--mic", "--system", "--app", "--started"}, {"--json"})
                         : sub == "list" ? parse(rest, {"--limit"}, {"--json"})
                         : sub == "show" ? parse(rest, {}, {"--json", "--transcript"})
                                         : parse(rest, {}, {});
        if (sub == "process") {
            return process(runtime, p, out, err);
        }
        if (sub == "list") {
            return list(runtime, p, out);
        }
        if (sub == "show") {
            return show(runtime, p, out, err);
        }
        return remove(runtime, p, err);
    } catch (const NoStore&) {
        err << "tevractl notes: the history database could not be opened\n";
        return 1;
    } catch (const UsageError& e) {
        return usage("notes", e.message, err);
    } catch (const InputError& e) {
        err << "tevractl notes " << sub << ": " << e.message << "\n";
        return 2;
    }
}

}  // namespace tevra::ctl
