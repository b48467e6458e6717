#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/json_decode.h"
#include "store/session_records.h"

// The JSON forms of the session records: what the store keeps in its
// transcript_json and items_json columns and the complete form of a session.
// Keys are written in the order of the fields; an absent optional is left out,
// never written as null. Decoding is strict: text that is not JSON (or not
// UTF-8), a missing required key, a value of the wrong type or an unknown kind
// or speaker throws DecodingError, and the caller decides what that means.
// Unknown keys are ignored, and null stands for an absent optional. The
// decoders read with simdjson: the notetaker's page decodes fifty hour-long
// transcripts each time it opens.
//
// The form in which a language model writes items ("when", "due", "time") is
// another one and is never read here.
namespace tevra::SessionJSON {

// A value that has no JSON form: text that is not UTF-8, a number that is not finite.
class EncodingError : public MessageError {
public:
    using MessageError::MessageError;
};

nlohmann::ordered_json toJSON(const CaptureItem& item);
nlohmann::ordered_json toJSON(const TranscriptLine& line);
nlohmann::ordered_json toJSON(const NoteSession& session);

// Text forms. The encoders throw EncodingError; indent < 0 writes one line.
std::string encodeTranscript(const std::vector<TranscriptLine>& lines);
std::string encodeItems(const std::vector<CaptureItem>& items);
std::string encodeSession(const NoteSession& session, int indent = -1);

std::vector<TranscriptLine> decodeTranscript(std::string_view text);
std::vector<CaptureItem> decodeItems(std::string_view text);
NoteSession decodeSession(std::string_view text);

}  // namespace tevra::SessionJSON
