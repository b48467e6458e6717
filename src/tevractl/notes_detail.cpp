#include "tevractl/notes_detail.h"

#include <ostream>

#include "base/text.h"
#include "notetaker/notetaker_format.h"

namespace tevra::ctl {
namespace {

struct Group {
    CaptureKind kind;
    const char* heading;
    const char* mark;
};

constexpr Group kGroups[] = {
    {CaptureKind::task, "Tasks", "\u2610"},
    {CaptureKind::event, "Events", "\u25b8"},
    {CaptureKind::note, "Notes", "\u2022"},
};

void printItem(const CaptureItem& item, const char* mark, std::ostream& out) {
    out << "  " << mark << " " << item.title;
    if (item.kind == CaptureKind::event) {
        if (const auto when = NotetakerFormat::eventWhen(item)) {
            out << " \u2014 " << *when;
        }
    }
    if (item.owner == Speaker::them) {
        out << "  (waiting on them)";
    }
    out << "\n";
    if (item.detail && !text::trim(*item.detail).empty()) {
        out << "    " << *item.detail << "\n";
    }
    if (!text::trim(item.evidence).empty()) {
        out << "    \u201c" << item.evidence << "\u201d\n";
    }
}

}  // namespace

void printSessionDetail(const NoteSession& session, std::ostream& out) {
    out << NotetakerFormat::displayTitle(session) << "\n"
        << NotetakerFormat::detailSubtitle(session) << "\n";
    if (session.items.empty()) {
        out << "\nNo tasks or notes were extracted from this session.\n";
    }
    for (const Group& group : kGroups) {
        bool headed = false;
        for (const CaptureItem& item : session.items) {
            if (item.kind != group.kind) {
                continue;
            }
            if (!headed) {
                out << "\n" << group.heading << "\n";
                headed = true;
            }
            printItem(item, group.mark, out);
        }
    }
    out << "\nTranscript\n";
    if (session.transcript.empty()) {
        out << "No transcript was captured.\n";
    } else {
        out << NotetakerFormat::transcriptText(session) << "\n";
    }
}

void printSessionLine(const NoteSession& session, std::ostream& out) {
    out << session.id << "  " << NotetakerFormat::displayTitle(session) << "  "
        << NotetakerFormat::relative(session.startedAt) << "  "
        << NotetakerFormat::duration(session.startedAt, session.endedAt) << "  "
        << NotetakerFormat::summary(session.items) << "\n";
}

}  // namespace tevra::ctl
