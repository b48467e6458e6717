#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "notetaker/session_processor.h"
#include "notetaker/session_spool.h"

// A spool folder made into a saved session: after a call, and at start for
// the folders a Tevra that ended mid-call left behind. Blocking; a caller
// runs it on a background thread.
namespace tevra::SpooledSession {

using LogLine = std::function<void(const std::string&)>;

// Processes both streams of the folder (a file cut off by a crash is
// repaired first) under its app name and start, and then removes the folder.
// It stays when windows could not be transcribed, marked with the session's
// id, so that `tevractl notes process` can do them again; and it stays
// unmarked when there is no store to save into, so that the next start tries
// again. The id of the saved session, if any.
std::optional<int64_t> process(const SessionServices& services, SpoolFolder folder,
                               const SessionProcessor::Clock& clock, const LogLine& log);

}  // namespace tevra::SpooledSession
