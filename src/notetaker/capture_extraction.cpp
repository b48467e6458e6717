#include "notetaker/capture_extraction.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <iterator>

#include "base/date_format.h"
#include "base/text.h"

namespace tevra::CaptureExtraction {
namespace {

using nlohmann::json;

// A title's words of three or more characters, sorted, each once.
using TokenSet = std::vector<std::string>;

const std::string* stringAt(const json& object, const char* key) {
    const auto it = object.find(key);
    return it != object.end() && it->is_string() ? it->get_ptr<const std::string*>() : nullptr;
}

// A string with more than blanks and tabs in it, returned as it stands; a JSON
// null, as the prompt's template allows, is no string.
std::optional<std::string> nonEmpty(const json& object, const char* key) {
    const std::string* value = stringAt(object, key);
    if (value == nullptr || text::trimBlanks(*value).empty()) {
        return std::nullopt;
    }
    return *value;
}

// Whether text is shape character for character, where 'd' stands for an
// ASCII digit. ICU's strict parsing still takes "10:000" for "HH:mm"; the
// stored forms are exactly as long as their patterns.
bool hasShape(std::string_view text, std::string_view shape) {
    return text.size() == shape.size() &&
           std::equal(text.begin(), text.end(), shape.begin(),
                      [](char c, char s) { return s == 'd' ? c >= '0' && c <= '9' : c == s; });
}

std::optional<std::string> validISODate(std::optional<std::string> text) {
    thread_local DateFormat::Pattern isoDate("yyyy-MM-dd", "en_US_POSIX", "UTC");
    if (!text || !hasShape(*text, "dddd-dd-dd") || !isoDate.parseStrict(*text)) {
        return std::nullopt;
    }
    return text;
}

std::optional<std::string> validTime(std::optional<std::string> text) {
    thread_local DateFormat::Pattern clockTime("HH:mm", "en_US_POSIX");
    if (!text || !hasShape(*text, "dd:dd") || !clockTime.parseStrict(*text)) {
        return std::nullopt;
    }
    return text;
}

// A number, or a string holding a decimal number ("0.9"). Not a number that
// has no JSON form: a "nan" would make the item unsavable.
std::optional<double> doubleValue(const json& object, const char* key) {
    const auto it = object.find(key);
    if (it == object.end()) {
        return std::nullopt;
    }
    if (it->is_number()) {
        return it->get<double>();
    }
    if (!it->is_string()) {
        return std::nullopt;
    }
    std::string_view digits = it->get_ref<const std::string&>();
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-') {
        digits.remove_prefix(1);  // from_chars takes a "-" but no "+"
    }
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size() || digits.empty() ||
        std::isnan(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<Speaker> speakerWord(const std::string* word) {
    return word ? speakerFrom(text::lowercase(*word)) : std::nullopt;
}

bool longEnough(const std::string& token) {
    const bool ascii = std::all_of(token.begin(), token.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return (ascii ? token.size() : text::characterCount(token)) >= 3;
}

TokenSet tokenSet(const std::string& normalized) {
    TokenSet tokens;
    size_t start = 0;
    while (start < normalized.size()) {
        size_t end = normalized.find(' ', start);
        if (end == std::string::npos) {
            end = normalized.size();
        }
        std::string token = normalized.substr(start, end - start);
        if (longEnough(token)) {
            tokens.push_back(std::move(token));
        }
        start = end + 1;
    }
    std::sort(tokens.begin(), tokens.end());
    tokens.erase(std::unique(tokens.begin(), tokens.end()), tokens.end());
    return tokens;
}

double jaccard(const TokenSet& a, const TokenSet& b) {
    if (a.empty() && b.empty()) {
        return 0;
    }
    size_t shared = 0;
    for (auto i = a.begin(), j = b.begin(); i != a.end() && j != b.end();) {
        if (*i < *j) {
            ++i;
        } else if (*j < *i) {
            ++j;
        } else {
            ++shared, ++i, ++j;
        }
    }
    return static_cast<double>(shared) / static_cast<double>(a.size() + b.size() - shared);
}

// The better-supported item with what the other one knows besides. A stated
// "them" beats the owner "me", which is only what a missing owner defaults to.
CaptureItem merge(const CaptureItem& existing, const CaptureItem& incoming) {
    const bool existingLeads = existing.confidence >= incoming.confidence;
    const CaptureItem& primary = existingLeads ? existing : incoming;
    const CaptureItem& secondary = existingLeads ? incoming : existing;
    CaptureItem merged = primary;
    for (auto field : {&CaptureItem::detail, &CaptureItem::whenText, &CaptureItem::dueISO,
                       &CaptureItem::dueTime}) {
        if (!(merged.*field)) {
            merged.*field = secondary.*field;
        }
    }
    if (primary.speaker == Speaker::unknown) {
        merged.speaker = secondary.speaker;
    }
    if (primary.owner == Speaker::me) {
        merged.owner = secondary.owner;
    }
    merged.confidence = std::max(primary.confidence, secondary.confidence);
    if (primary.evidence.empty()) {
        merged.evidence = secondary.evidence;
    }
    return merged;
}

}  // namespace

std::string jsonPayload(std::string_view reply) {
    std::string text = text::trim(reply);
    if (text.starts_with("```")) {
        // The fence and a language tag such as "json" after it.
        size_t bodyStart = 3;
        while (bodyStart < text.size() &&
               std::isalpha(static_cast<unsigned char>(text[bodyStart]))) {
            ++bodyStart;
        }
        if (bodyStart < text.size() && text[bodyStart] == '\n') {
            ++bodyStart;
        }
        text.erase(0, bodyStart);
        if (text.ends_with("```")) {
            text.resize(text.size() - 3);
        }
        text = text::trim(text);
    }
    const size_t first = text.find_first_of("{[");
    const size_t last = text.find_last_of("}]");
    if (first != std::string::npos && last != std::string::npos && last >= first) {
        text = text.substr(first, last - first + 1);
    }
    return text;
}

std::optional<std::vector<json>> rawItems(std::string_view reply) {
    const json value = json::parse(jsonPayload(reply), nullptr, /*allow_exceptions=*/false);
    const json* array = nullptr;
    if (value.is_object()) {
        const auto it = value.find("items");
        if (it == value.end() || !it->is_array()) {
            return std::vector<json>{};  // structured, and nothing in it
        }
        array = &*it;
    } else if (value.is_array()) {
        array = &value;
    } else {
        return std::nullopt;  // not JSON (discarded), or a bare scalar
    }
    std::vector<json> objects;
    for (const json& element : *array) {
        if (element.is_object()) {
            objects.push_back(element);
        }
    }
    return objects;
}

bool isStructured(std::string_view reply) {
    return rawItems(reply).has_value();
}

std::optional<CaptureItem> item(const json& object) {
    if (!object.is_object()) {
        return std::nullopt;
    }
    const std::string* title = stringAt(object, "title");
    const std::string* kindWord = stringAt(object, "kind");
    const std::optional<CaptureKind> kind =
        kindWord ? captureKindFrom(text::lowercase(*kindWord)) : std::nullopt;
    if (title == nullptr || !kind) {
        return std::nullopt;
    }
    CaptureItem result;
    result.title = text::trim(*title);
    if (result.title.empty()) {
        return std::nullopt;
    }
    result.kind = *kind;
    result.speaker = speakerWord(stringAt(object, "speaker")).value_or(Speaker::unknown);
    result.owner = speakerWord(stringAt(object, "owner"))
                       .value_or(result.speaker == Speaker::them ? Speaker::them : Speaker::me);
    result.detail = nonEmpty(object, "detail");
    result.whenText = nonEmpty(object, "when");
    result.dueISO = validISODate(nonEmpty(object, "due"));
    result.dueTime = validTime(nonEmpty(object, "time"));
    result.confidence =
        std::clamp(doubleValue(object, "confidence").value_or(unstatedConfidence), 0.0, 1.0);
    const std::string* evidence = stringAt(object, "evidence");
    result.evidence = evidence ? *evidence : std::string();
    return result;
}

std::vector<CaptureItem> parse(std::string_view reply) {
    std::vector<CaptureItem> items;
    for (const json& object : rawItems(reply).value_or(std::vector<json>{})) {
        if (auto parsed = item(object)) {
            items.push_back(std::move(*parsed));
        }
    }
    return items;
}

std::string normalize(std::string_view title) {
    const std::string blanked = text::blankNonAlphanumerics(text::lowercase(title));
    std::string normalized;
    size_t start = 0;
    while (start < blanked.size()) {
        size_t end = blanked.find(' ', start);
        if (end == std::string::npos) {
            end = blanked.size();
        }
        if (end > start) {
            if (!normalized.empty()) {
                normalized += ' ';
            }
            normalized.append(blanked, start, end - start);
        }
        start = end + 1;
    }
    return normalized;
}

std::vector<CaptureItem> consolidate(const std::vector<CaptureItem>& items) {
    struct Entry {
        CaptureItem item;
        std::string normalized;
        TokenSet tokens;
    };
    std::vector<Entry> entries;
    for (const CaptureItem& candidate : items) {
        std::string normalized = normalize(candidate.title);
        TokenSet tokens = tokenSet(normalized);
        const auto match = std::find_if(entries.begin(), entries.end(), [&](const Entry& entry) {
            return entry.item.kind == candidate.kind &&
                   (entry.normalized == normalized ||
                    jaccard(entry.tokens, tokens) >= sameItemSimilarity);
        });
        if (match == entries.end()) {
            entries.push_back({candidate, std::move(normalized), std::move(tokens)});
            continue;
        }
        const bool newcomerLeads = candidate.confidence > match->item.confidence;
        match->item = merge(match->item, candidate);
        if (newcomerLeads) {  // its title now stands for the entry
            match->normalized = std::move(normalized);
            match->tokens = std::move(tokens);
        }
    }
    std::vector<CaptureItem> result;
    result.reserve(entries.size());
    for (Entry& entry : entries) {
        result.push_back(std::move(entry.item));
    }
    return result;
}

std::vector<CaptureItem> keep(const std::vector<CaptureItem>& items, double minConfidence) {
    std::vector<CaptureItem> kept;
    std::copy_if(items.begin(), items.end(), std::back_inserter(kept),
                 [&](const CaptureItem& item) { return item.confidence >= minConfidence; });
    return kept;
}

}  // namespace tevra::CaptureExtraction
