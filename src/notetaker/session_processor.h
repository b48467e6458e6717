#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "polish/polish_backend.h"
#include "store/session_records.h"
#include "stt/transcription_router.h"

namespace tevra {

class HistoryStore;
class WeftRuntime;

// What processing a session takes from the runtime, read once at its start.
struct SessionServices {
    std::shared_ptr<const TranscriptionRouter> router;
    std::optional<std::string> languageHint;  // absent when the setting is empty
    std::vector<std::shared_ptr<const PolishBackend>> polishers;
    std::shared_ptr<HistoryStore> store;  // absent: the session cannot be kept

    static SessionServices from(const WeftRuntime& runtime);
};

// How far processing is: windows sent of those with sound in them, then the
// extraction.
struct SessionProgress {
    enum class Stage { transcribing, extracting };
    Stage stage = Stage::transcribing;
    size_t done = 0;
    size_t total = 0;
};

// A processed session and what went wrong on the way. Nothing here stops a
// session from being saved; only a missing store does.
struct ProcessedSession {
    NoteSession session;            // with its id once saved
    std::optional<int64_t> id;      // absent when nothing was saved
    size_t failedWindows = 0;       // windows that no speech service transcribed
    std::string lastWindowFailure;  // why the last of them failed
    std::optional<std::string> extractionFailure;
};

// Everything between the end of a recording and a saved session: each stream
// cut into windows, near-silent windows skipped (they cost no request), the
// others transcribed one after the other, the microphone's before the
// system's; then the transcript assembled, the items extracted, the title
// derived and the session saved. A window that fails is left out, a failed
// extraction leaves the session without items.
//
// Blocking, and touching nothing but what it is given: a caller runs it on a
// background thread and takes the result back to its own.
class SessionProcessor {
public:
    static constexpr int64_t sampleRate = 16000;

    using Clock = std::function<double()>;  // seconds since the Unix epoch
    using ProgressHandler = std::function<void(const SessionProgress&)>;

    // clock: the moment the session is finished (its end) and the day the
    // extraction resolves "next Friday" against.
    explicit SessionProcessor(SessionServices services, Clock clock = {});

    // mic, system: 16 kHz mono samples; startedAt: seconds since the Unix epoch.
    ProcessedSession process(const std::string& app, double startedAt, std::span<const int16_t> mic,
                             std::span<const int16_t> system,
                             const ProgressHandler& progress = {}) const;

private:
    SessionServices services_;
    Clock clock_;
};

}  // namespace tevra
