#include "store/session_records.h"

#include "base/date_format.h"
#include "base/text.h"

namespace tevra {

std::string_view rawValue(CaptureKind kind) {
    switch (kind) {
        case CaptureKind::task:
            return "task";
        case CaptureKind::event:
            return "event";
        case CaptureKind::note:
            return "note";
    }
    return "note";
}

std::string_view rawValue(Speaker speaker) {
    switch (speaker) {
        case Speaker::me:
            return "me";
        case Speaker::them:
            return "them";
        case Speaker::unknown:
            return "unknown";
    }
    return "unknown";
}

std::optional<CaptureKind> captureKindFrom(std::string_view raw) {
    for (const CaptureKind kind : {CaptureKind::task, CaptureKind::event, CaptureKind::note}) {
        if (raw == rawValue(kind)) {
            return kind;
        }
    }
    return std::nullopt;
}

std::optional<Speaker> speakerFrom(std::string_view raw) {
    for (const Speaker speaker : {Speaker::me, Speaker::them, Speaker::unknown}) {
        if (raw == rawValue(speaker)) {
            return speaker;
        }
    }
    return std::nullopt;
}

std::string NoteSession::deriveTitle(std::string_view appName, double startedAt,
                                     const std::vector<TranscriptLine>& transcript,
                                     std::string_view timeZone) {
    const std::string stamp = DateFormat::format(startedAt, "d MMM, HH:mm", "en_US", timeZone);
    const std::string app = text::trim(appName);
    if (!app.empty() && text::lowercase(app) != "unknown") {
        return app + " \u00b7 " + stamp;
    }
    for (const TranscriptLine& line : transcript) {
        if (text::countSpaceSeparated(line.text) > 3) {
            return text::prefixCharacters(text::trim(line.text), 60);
        }
    }
    return "Call \u00b7 " + stamp;
}

}  // namespace tevra
