#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/session_records.h"

// The short texts the notetaker shows for its sessions. Times are seconds
// since the Unix epoch.
namespace tevra::NotetakerFormat {

// "2 hours ago", in the user's language, against now (the present by default).
std::string relative(double secondsSinceEpoch);
std::string relative(double secondsSinceEpoch, double now);

// "in progress" without an end; "59s", "12 min", "1h", "1h 1m".
std::string duration(double started, std::optional<double> ended);

// The title, or "Zoom session" when it is blank.
std::string displayTitle(const NoteSession& session);

// "1 task · 2 notes"; "Just the transcript" with no items.
std::string summary(const std::vector<CaptureItem>& items);

// "12 min · 3 items"; the duration alone with no items.
std::string detailSubtitle(const NoteSession& session);

// "You", "Them", "—".
std::string speakerLabel(Speaker speaker);

// mm:ss within the session, from an offset (a line's ts) or an absolute time.
std::string clock(double offset, double startedAt);

// mm:ss from since to now, never below zero.
std::string elapsed(double since, double now);

// An event's date, "Sat 5 Jul · 19:30" in the language of the locale (the
// user's when empty), or the words it was said in when no date was resolved.
std::optional<std::string> eventWhen(const CaptureItem& item, std::string_view locale = {});

// What "Copy transcript" puts on the clipboard: one line per utterance,
// "You  00:30  text", joined by line feeds.
std::string transcriptText(const NoteSession& session);

}  // namespace tevra::NotetakerFormat
