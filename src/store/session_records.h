#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tevra {

// What an extracted item is. The raw values are the stored and the model's words.
enum class CaptureKind { task, event, note };

// Who said or owes something: the microphone is me, the system's audio them.
enum class Speaker { me, them, unknown };

std::string_view rawValue(CaptureKind kind);
std::string_view rawValue(Speaker speaker);
std::optional<CaptureKind> captureKindFrom(std::string_view raw);  // exact raw value only
std::optional<Speaker> speakerFrom(std::string_view raw);

// One thing from a session worth keeping. dueISO is exactly "yyyy-MM-dd",
// dueTime "HH:mm" (24 hours); evidence quotes the transcript and may be empty.
struct CaptureItem {
    using Speaker = tevra::Speaker;

    CaptureKind kind = CaptureKind::note;
    std::string title{};
    std::optional<std::string> detail{};
    std::optional<std::string> whenText{};
    std::optional<std::string> dueISO{};
    std::optional<std::string> dueTime{};
    Speaker speaker = Speaker::unknown;
    Speaker owner = Speaker::me;
    double confidence = 0;
    std::string evidence{};

    bool operator==(const CaptureItem&) const = default;
};

// One utterance: ts in seconds from the start of the session, text trimmed.
struct TranscriptLine {
    double ts = 0;
    Speaker speaker = Speaker::unknown;
    std::string text{};

    bool operator==(const TranscriptLine&) const = default;
};

// One saved session; times in seconds since the Unix epoch, id 0 until saved.
struct NoteSession {
    int64_t id = 0;
    double startedAt = 0;
    std::optional<double> endedAt{};
    std::string appName{};
    std::string title{};
    std::vector<TranscriptLine> transcript{};
    std::vector<CaptureItem> items{};

    bool operator==(const NoteSession&) const = default;

    // "Zoom · 5 Jul, 14:03"; without a known application the first line of
    // more than three words (at most 60 characters), else "Call · 5 Jul, 14:03".
    // An empty time zone is the process's own.
    static std::string deriveTitle(std::string_view appName, double startedAt,
                                   const std::vector<TranscriptLine>& transcript,
                                   std::string_view timeZone = {});
};

// One transcribed window of one stream, on its way to the transcript; never stored.
struct TranscribedChunk {
    Speaker speaker = Speaker::unknown;
    double startTs = 0;  // seconds from the start of the session
    std::string text{};

    bool operator==(const TranscribedChunk&) const = default;
};

}  // namespace tevra
