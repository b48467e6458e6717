#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/session_records.h"

// Reads what a language model answered to the extraction prompt. The model is
// an unreliable witness: its reply may be fenced, wrapped in prose, shaped
// otherwise than asked, repetitive or overconfident. Everything here is a
// pure function of the reply's text, and no reply makes one throw.
namespace tevra::CaptureExtraction {

inline constexpr double defaultMinConfidence = 0.55;
inline constexpr double unstatedConfidence = 0.7;
inline constexpr double sameItemSimilarity = 0.6;

// The JSON inside a reply: a leading code fence removed, then cut to the span
// from the first opening brace or bracket to the last closing one.
std::string jsonPayload(std::string_view reply);

// The item objects of the reply: {"items":[...]} or a bare array, with the
// elements that are not objects dropped; an object without an "items" array
// holds none. nullopt when the reply is not JSON or is a bare scalar.
std::optional<std::vector<nlohmann::json>> rawItems(std::string_view reply);
bool isStructured(std::string_view reply);

// One item in the model's form ("when", "due", "time"); nullopt without a
// usable title or kind.
std::optional<CaptureItem> item(const nlohmann::json& object);

// Every usable item of the reply, in order; none when it is not structured.
std::vector<CaptureItem> parse(std::string_view reply);

// Lower-cased, anything but letters, marks, digits and blanks made a blank,
// single blanks between the words.
std::string normalize(std::string_view title);

// Repeats merged into the first one seen: same kind, and titles equal when
// normalized or sharing at least 0.6 of their words of three or more characters.
std::vector<CaptureItem> consolidate(const std::vector<CaptureItem>& items);

// The items at or above minConfidence, in order.
std::vector<CaptureItem> keep(const std::vector<CaptureItem>& items,
                              double minConfidence = defaultMinConfidence);

}  // namespace tevra::CaptureExtraction
