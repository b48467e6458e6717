#pragma once

#include <iosfwd>

#include "store/session_records.h"

namespace tevra::ctl {

// A session as its detail page shows it: title, subtitle, the tasks, events
// and notes, then the transcript as "Copy transcript" gives it.
void printSessionDetail(const NoteSession& session, std::ostream& out);

// One line of the list: id, title, when, how long, what it holds.
void printSessionLine(const NoteSession& session, std::ostream& out);

}  // namespace tevra::ctl
