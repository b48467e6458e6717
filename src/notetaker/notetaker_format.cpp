#include "notetaker/notetaker_format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "base/date_format.h"
#include "base/text.h"
#include "store/history_row.h"

namespace tevra::NotetakerFormat {
namespace {

std::string mmss(double seconds) {
    const auto whole = static_cast<long long>(seconds);
    char text[32];
    std::snprintf(text, sizeof text, "%02lld:%02lld", whole / 60, whole % 60);
    return text;
}

std::string counted(size_t count, const char* noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

std::string relative(double secondsSinceEpoch) {
    return relative(secondsSinceEpoch, HistoryRow::currentTimestamp());
}

std::string relative(double secondsSinceEpoch, double now) {
    return DateFormat::relative(secondsSinceEpoch, now);
}

std::string duration(double started, std::optional<double> ended) {
    if (!ended) {
        return "in progress";
    }
    const double span = std::trunc(*ended - started);
    const long long n = span > 0 ? static_cast<long long>(span) : 0;
    if (n < 60) {
        return std::to_string(n) + "s";
    }
    if (n < 3600) {
        return std::to_string(n / 60) + " min";
    }
    const long long hours = n / 3600;
    const long long minutes = n % 3600 / 60;
    if (minutes == 0) {
        return std::to_string(hours) + "h";
    }
    return std::to_string(hours) + "h " + std::to_string(minutes) + "m";
}

std::string displayTitle(const NoteSession& session) {
    std::string title = text::trim(session.title);
    return title.empty() ? session.appName + " session" : title;
}

std::string summary(const std::vector<CaptureItem>& items) {
    std::string text;
    for (const auto& [kind, noun] : {std::pair{CaptureKind::task, "task"},
                                     {CaptureKind::event, "event"},
                                     {CaptureKind::note, "note"}}) {
        const auto count = static_cast<size_t>(std::count_if(
            items.begin(), items.end(), [k = kind](const CaptureItem& i) { return i.kind == k; }));
        if (count > 0) {
            text += (text.empty() ? "" : " \u00b7 ") + counted(count, noun);
        }
    }
    return text.empty() ? "Just the transcript" : text;
}

std::string detailSubtitle(const NoteSession& session) {
    std::string text = duration(session.startedAt, session.endedAt);
    if (!session.items.empty()) {
        text += " \u00b7 " + counted(session.items.size(), "item");
    }
    return text;
}

std::string speakerLabel(Speaker speaker) {
    switch (speaker) {
        case Speaker::me:
            return "You";
        case Speaker::them:
            return "Them";
        case Speaker::unknown:
            break;
    }
    return "\u2014";
}

std::string clock(double offset, double startedAt) {
    // An offset is smaller than any start: a line's ts is read as an offset,
    // an absolute time is measured from the start.
    const double within = startedAt <= offset ? offset - startedAt : offset;
    return mmss(std::max(within, 0.0));
}

std::string elapsed(double since, double now) {
    return mmss(std::max(now - since, 0.0));
}

std::optional<std::string> eventWhen(const CaptureItem& item, std::string_view locale) {
    if (item.dueISO) {
        if (const auto day =
                DateFormat::parseStrict(*item.dueISO, "yyyy-MM-dd", "en_US_POSIX", "UTC")) {
            std::string text = DateFormat::format(*day, "EEE d MMM", locale, "UTC");
            if (item.dueTime) {
                text += " \u00b7 " + *item.dueTime;
            }
            return text;
        }
    }
    return item.whenText;
}

std::string transcriptText(const NoteSession& session) {
    std::string text;
    for (const TranscriptLine& line : session.transcript) {
        if (!text.empty()) {
            text += '\n';
        }
        text += speakerLabel(line.speaker) + "  " + clock(line.ts, session.startedAt) + "  " +
                line.text;
    }
    return text;
}

}  // namespace tevra::NotetakerFormat
