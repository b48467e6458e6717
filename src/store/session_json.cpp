#include "store/session_json.h"

#include <simdjson.h>

#include <cmath>

namespace tevra::SessionJSON {
namespace {

using nlohmann::ordered_json;
using simdjson::dom::array;
using simdjson::dom::element;
using simdjson::dom::object;

[[noreturn]] void wrongType(const char* key, const char* expected) {
    throw DecodingError(std::string("\"") + key + "\" is not " + expected);
}

object objectOf(element value) {
    object result;
    if (value.get(result) != simdjson::SUCCESS) {
        throw DecodingError("expected an object");
    }
    return result;
}

array arrayOf(element value) {
    array result;
    if (value.get(result) != simdjson::SUCCESS) {
        throw DecodingError("expected an array");
    }
    return result;
}

element required(const object& record, const char* key) {
    element value;
    if (record[key].get(value) != simdjson::SUCCESS) {
        throw DecodingError(std::string("the key \"") + key + "\" is missing");
    }
    return value;
}

// An absent key and a null both mean "none".
std::optional<element> optional(const object& record, const char* key) {
    element value;
    if (record[key].get(value) != simdjson::SUCCESS || value.is_null()) {
        return std::nullopt;
    }
    return value;
}

std::string stringOf(element value, const char* key) {
    std::string_view text;
    if (value.get(text) != simdjson::SUCCESS) {
        wrongType(key, "a string");
    }
    return std::string(text);
}

double doubleOf(element value, const char* key) {
    double number = 0;
    if (value.get(number) != simdjson::SUCCESS) {  // integers convert too
        wrongType(key, "a number");
    }
    return number;
}

std::optional<std::string> optionalString(const object& record, const char* key) {
    const auto value = optional(record, key);
    return value ? std::optional(stringOf(*value, key)) : std::nullopt;
}

Speaker speakerOf(const object& record, const char* key) {
    const auto speaker = speakerFrom(stringOf(required(record, key), key));
    if (!speaker) {
        throw DecodingError(std::string("\"") + key + "\" is not me, them or unknown");
    }
    return *speaker;
}

CaptureItem itemFrom(element value) {
    const object record = objectOf(value);
    CaptureItem item;
    const auto kind = captureKindFrom(stringOf(required(record, "kind"), "kind"));
    if (!kind) {
        throw DecodingError("\"kind\" is not task, event or note");
    }
    item.kind = *kind;
    item.title = stringOf(required(record, "title"), "title");
    item.detail = optionalString(record, "detail");
    item.whenText = optionalString(record, "whenText");
    item.dueISO = optionalString(record, "dueISO");
    item.dueTime = optionalString(record, "dueTime");
    item.speaker = speakerOf(record, "speaker");
    item.owner = speakerOf(record, "owner");
    item.confidence = doubleOf(required(record, "confidence"), "confidence");
    item.evidence = stringOf(required(record, "evidence"), "evidence");
    return item;
}

TranscriptLine lineFrom(element value) {
    const object record = objectOf(value);
    TranscriptLine line;
    line.ts = doubleOf(required(record, "ts"), "ts");
    line.speaker = speakerOf(record, "speaker");
    line.text = stringOf(required(record, "text"), "text");
    return line;
}

template <typename Record>
std::vector<Record> recordsOf(element value, Record (*decode)(element)) {
    const array elements = arrayOf(value);
    std::vector<Record> records;
    records.reserve(elements.size());
    for (const element e : elements) {
        records.push_back(decode(e));
    }
    return records;
}

NoteSession sessionFrom(element value) {
    const object record = objectOf(value);
    NoteSession session;
    if (required(record, "id").get(session.id) != simdjson::SUCCESS) {
        wrongType("id", "a 64-bit integer");
    }
    session.startedAt = doubleOf(required(record, "startedAt"), "startedAt");
    if (const auto ended = optional(record, "endedAt")) {
        session.endedAt = doubleOf(*ended, "endedAt");
    }
    session.appName = stringOf(required(record, "appName"), "appName");
    session.title = stringOf(required(record, "title"), "title");
    session.transcript = recordsOf<TranscriptLine>(required(record, "transcript"), lineFrom);
    session.items = recordsOf<CaptureItem>(required(record, "items"), itemFrom);
    return session;
}

// The document lives in the parser until its next parse: each decoder copies
// what it needs out before it returns.
element parse(std::string_view text) {
    thread_local simdjson::dom::parser parser;
    element root;
    if (const auto error = parser.parse(text.data(), text.size()).get(root);
        error != simdjson::SUCCESS) {
        throw DecodingError(std::string("not valid JSON: ") + simdjson::error_message(error));
    }
    return root;
}

double finite(double value) {
    if (!std::isfinite(value)) {
        throw EncodingError("a number that is not finite has no JSON form");
    }
    return value;
}

void putOptional(ordered_json& fields, const char* key, const std::optional<std::string>& value) {
    if (value) {
        fields[key] = *value;
    }
}

template <typename Record>
ordered_json arrayJSON(const std::vector<Record>& records) {
    ordered_json list = ordered_json::array();
    for (const Record& record : records) {
        list.push_back(toJSON(record));
    }
    return list;
}

std::string dump(const ordered_json& value, int indent) {
    try {
        return value.dump(indent);
    } catch (const nlohmann::json::exception& e) {
        throw EncodingError(e.what());  // text that is not UTF-8
    }
}

}  // namespace

ordered_json toJSON(const CaptureItem& item) {
    ordered_json fields = {{"kind", rawValue(item.kind)}, {"title", item.title}};
    putOptional(fields, "detail", item.detail);
    putOptional(fields, "whenText", item.whenText);
    putOptional(fields, "dueISO", item.dueISO);
    putOptional(fields, "dueTime", item.dueTime);
    fields["speaker"] = rawValue(item.speaker);
    fields["owner"] = rawValue(item.owner);
    fields["confidence"] = finite(item.confidence);
    fields["evidence"] = item.evidence;
    return fields;
}

ordered_json toJSON(const TranscriptLine& line) {
    return {{"ts", finite(line.ts)}, {"speaker", rawValue(line.speaker)}, {"text", line.text}};
}

ordered_json toJSON(const NoteSession& session) {
    ordered_json fields = {{"id", session.id}, {"startedAt", finite(session.startedAt)}};
    if (session.endedAt) {
        fields["endedAt"] = finite(*session.endedAt);
    }
    fields["appName"] = session.appName;
    fields["title"] = session.title;
    fields["transcript"] = arrayJSON(session.transcript);
    fields["items"] = arrayJSON(session.items);
    return fields;
}

std::string encodeTranscript(const std::vector<TranscriptLine>& lines) {
    return dump(arrayJSON(lines), -1);
}

std::string encodeItems(const std::vector<CaptureItem>& items) {
    return dump(arrayJSON(items), -1);
}

std::string encodeSession(const NoteSession& session, int indent) {
    return dump(toJSON(session), indent);
}

std::vector<TranscriptLine> decodeTranscript(std::string_view text) {
    return recordsOf<TranscriptLine>(parse(text), lineFrom);
}

std::vector<CaptureItem> decodeItems(std::string_view text) {
    return recordsOf<CaptureItem>(parse(text), itemFrom);
}

NoteSession decodeSession(std::string_view text) {
    return sessionFrom(parse(text));
}

}  // namespace tevra::SessionJSON
