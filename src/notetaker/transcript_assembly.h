#pragma once

#include <string>
#include <vector>

#include "store/session_records.h"

// Two streams were transcribed apart, so a chunk's speaker is its stream; the
// transcript is their chunks in time order, one line per chunk.
namespace tevra::TranscriptAssembly {

// Texts trimmed, blank chunks dropped, the rest ordered by startTs. On equal
// times the input order stands: the microphone's chunks come first, so the
// user's line goes before the other party's.
std::vector<TranscriptLine> assemble(const std::vector<TranscribedChunk>& chunks);

// The text extraction reads: "Me: " or "Them: " before each line (nothing for
// an unknown speaker), one line feed between lines.
std::string flatText(const std::vector<TranscriptLine>& lines);

}  // namespace tevra::TranscriptAssembly
