#include "store/session_json.h"

#include <cmath>

namespace tevra::SessionJSON {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

const json& required(const json& object, const char* key) {
    if (!object.is_object()) {
        throw DecodingError(std::string("expected an object holding \"") + key + "\"");
    }
    const auto it = object.find(key);
    if (it == object.end()) {
        throw DecodingError(std::string("the key \"") + key + "\" is missing");
    }
    return *it;
}

// An absent key and a null both mean "none".
const json* optional(const json& object, const char* key) {
    const auto it = object.find(key);
    return it == object.end() || it->is_null() ? nullptr : &*it;
}

[[noreturn]] void wrongType(const char* key, const char* expected) {
    throw DecodingError(std::string("\"") + key + "\" is not " + expected);
}

std::string stringOf(const json& value, const char* key) {
    if (!value.is_string()) {
        wrongType(key, "a string");
    }
    return value.get<std::string>();
}

double doubleOf(const json& value, const char* key) {
    if (!value.is_number()) {
        wrongType(key, "a number");
    }
    return value.get<double>();
}

std::optional<std::string> optionalString(const json& object, const char* key) {
    const json* value = optional(object, key);
    return value ? std::optional(stringOf(*value, key)) : std::nullopt;
}

Speaker speakerOf(const json& object, const char* key) {
    const auto speaker = speakerFrom(stringOf(required(object, key), key));
    if (!speaker) {
        throw DecodingError(std::string("\"") + key + "\" is not me, them or unknown");
    }
    return *speaker;
}

double finite(double value) {
    if (!std::isfinite(value)) {
        throw EncodingError("a number that is not finite has no JSON form");
    }
    return value;
}

void putOptional(ordered_json& object, const char* key, const std::optional<std::string>& value) {
    if (value) {
        object[key] = *value;
    }
}

template <typename Record>
std::vector<Record> arrayOf(const json& value, Record (*decode)(const json&)) {
    if (!value.is_array()) {
        throw DecodingError("expected an array");
    }
    std::vector<Record> records;
    records.reserve(value.size());
    for (const json& element : value) {
        records.push_back(decode(element));
    }
    return records;
}

template <typename Record>
ordered_json arrayJSON(const std::vector<Record>& records) {
    ordered_json array = ordered_json::array();
    for (const Record& record : records) {
        array.push_back(toJSON(record));
    }
    return array;
}

json parse(std::string_view text) {
    try {
        return json::parse(text);
    } catch (const json::exception& e) {
        throw DecodingError(std::string("not valid JSON: ") + e.what());
    }
}

std::string dump(const ordered_json& value, int indent) {
    try {
        return value.dump(indent);
    } catch (const json::exception& e) {
        throw EncodingError(e.what());  // text that is not UTF-8
    }
}

}  // namespace

ordered_json toJSON(const CaptureItem& item) {
    ordered_json object = {{"kind", rawValue(item.kind)}, {"title", item.title}};
    putOptional(object, "detail", item.detail);
    putOptional(object, "whenText", item.whenText);
    putOptional(object, "dueISO", item.dueISO);
    putOptional(object, "dueTime", item.dueTime);
    object["speaker"] = rawValue(item.speaker);
    object["owner"] = rawValue(item.owner);
    object["confidence"] = finite(item.confidence);
    object["evidence"] = item.evidence;
    return object;
}

ordered_json toJSON(const TranscriptLine& line) {
    return {{"ts", finite(line.ts)}, {"speaker", rawValue(line.speaker)}, {"text", line.text}};
}

ordered_json toJSON(const NoteSession& session) {
    ordered_json object = {{"id", session.id}, {"startedAt", finite(session.startedAt)}};
    if (session.endedAt) {
        object["endedAt"] = finite(*session.endedAt);
    }
    object["appName"] = session.appName;
    object["title"] = session.title;
    object["transcript"] = arrayJSON(session.transcript);
    object["items"] = arrayJSON(session.items);
    return object;
}

CaptureItem itemFrom(const json& object) {
    CaptureItem item;
    const auto kind = captureKindFrom(stringOf(required(object, "kind"), "kind"));
    if (!kind) {
        throw DecodingError("\"kind\" is not task, event or note");
    }
    item.kind = *kind;
    item.title = stringOf(required(object, "title"), "title");
    item.detail = optionalString(object, "detail");
    item.whenText = optionalString(object, "whenText");
    item.dueISO = optionalString(object, "dueISO");
    item.dueTime = optionalString(object, "dueTime");
    item.speaker = speakerOf(object, "speaker");
    item.owner = speakerOf(object, "owner");
    item.confidence = doubleOf(required(object, "confidence"), "confidence");
    item.evidence = stringOf(required(object, "evidence"), "evidence");
    return item;
}

TranscriptLine lineFrom(const json& object) {
    TranscriptLine line;
    line.ts = doubleOf(required(object, "ts"), "ts");
    line.speaker = speakerOf(object, "speaker");
    line.text = stringOf(required(object, "text"), "text");
    return line;
}

NoteSession sessionFrom(const json& object) {
    NoteSession session;
    const json& id = required(object, "id");
    if (!id.is_number_integer() ||
        (id.is_number_unsigned() && id.get<uint64_t>() > uint64_t{INT64_MAX})) {
        wrongType("id", "a 64-bit integer");
    }
    session.id = id.get<int64_t>();
    session.startedAt = doubleOf(required(object, "startedAt"), "startedAt");
    if (const json* ended = optional(object, "endedAt")) {
        session.endedAt = doubleOf(*ended, "endedAt");
    }
    session.appName = stringOf(required(object, "appName"), "appName");
    session.title = stringOf(required(object, "title"), "title");
    session.transcript = arrayOf<TranscriptLine>(required(object, "transcript"), lineFrom);
    session.items = arrayOf<CaptureItem>(required(object, "items"), itemFrom);
    return session;
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
    return arrayOf<TranscriptLine>(parse(text), lineFrom);
}

std::vector<CaptureItem> decodeItems(std::string_view text) {
    return arrayOf<CaptureItem>(parse(text), itemFrom);
}

NoteSession decodeSession(std::string_view text) {
    return sessionFrom(parse(text));
}

}  // namespace tevra::SessionJSON
