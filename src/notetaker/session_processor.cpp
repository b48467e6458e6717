#include "notetaker/session_processor.h"

#include "base/log.h"
#include "base/text.h"
#include "core/weft_runtime.h"
#include "notetaker/audio_chunker.h"
#include "notetaker/session_extractor.h"
#include "notetaker/transcript_assembly.h"
#include "store/history_row.h"
#include "store/history_store.h"
#include "stt/wav.h"

namespace tevra {
namespace {

struct Window {
    Speaker speaker;
    AudioChunker::Chunk chunk;
};

// The windows with sound in them, the microphone's first.
std::vector<Window> windowsToSend(std::span<const int16_t> mic, std::span<const int16_t> system) {
    std::vector<Window> windows;
    for (const auto& [speaker, stream] : {std::pair{Speaker::me, mic}, {Speaker::them, system}}) {
        for (const auto& chunk : AudioChunker::chunks(stream, SessionProcessor::sampleRate)) {
            if (!WAV::isNearSilent(chunk.samples)) {
                windows.push_back({speaker, chunk});
            }
        }
    }
    return windows;
}

}  // namespace

SessionServices SessionServices::from(const WeftRuntime& runtime) {
    const std::string& hint = runtime.settings().languageHint;
    return {runtime.transcriptionRouter(), hint.empty() ? std::nullopt : std::optional(hint),
            runtime.polishers(), runtime.store()};
}

SessionProcessor::SessionProcessor(SessionServices services, Clock clock)
    : services_(std::move(services)),
      clock_(clock ? std::move(clock) : Clock(HistoryRow::currentTimestamp)) {}

ProcessedSession SessionProcessor::process(const std::string& app, double startedAt,
                                           std::span<const int16_t> mic,
                                           std::span<const int16_t> system,
                                           const ProgressHandler& progress) const {
    ProcessedSession result;
    const std::vector<Window> windows = windowsToSend(mic, system);
    SessionProgress state{SessionProgress::Stage::transcribing, 0, windows.size()};
    std::vector<TranscribedChunk> chunks;
    for (const Window& window : windows) {
        if (progress) {
            progress(state);
        }
        ++state.done;
        try {
            const auto routed = services_.router->route(WAV::data(window.chunk.samples, sampleRate),
                                                        services_.languageHint);
            if (!text::trim(routed.transcript.text).empty()) {
                chunks.push_back({window.speaker, window.chunk.startTs, routed.transcript.text});
            }
        } catch (const std::exception& e) {
            ++result.failedWindows;
            result.lastWindowFailure = describe(e);
        }
    }

    NoteSession& session = result.session;
    session.transcript = TranscriptAssembly::assemble(chunks);
    const std::string flat = TranscriptAssembly::flatText(session.transcript);
    if (!text::trim(flat).empty()) {
        if (progress) {
            progress({SessionProgress::Stage::extracting, state.done, state.total});
        }
        try {
            session.items = SessionExtractor(services_.polishers).extract(flat, clock_());
        } catch (const std::exception& e) {
            result.extractionFailure = describe(e);
        }
    }
    session.startedAt = startedAt;
    session.appName = app;
    session.title = NoteSession::deriveTitle(app, startedAt, session.transcript);
    // The end is when the session was finished, processing included.
    session.endedAt = clock_();
    if (!services_.store) {
        return result;
    }
    const int64_t id = services_.store->saveSession(session);
    Log::write("notetaker: saved session #" + std::to_string(id) + " \u2014 " +
               std::to_string(session.transcript.size()) + " lines, " +
               std::to_string(session.items.size()) + " items");
    if (id != 0) {
        session.id = id;
        result.id = id;
    }
    return result;
}

}  // namespace tevra
