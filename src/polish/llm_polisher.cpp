#include "polish/llm_polisher.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/http_errors.h"
#include "base/text.h"
#include "polish/prompt_builder.h"

namespace tevra {
namespace {

constexpr double kPolishTemperature = 0.2;
constexpr double kInstructTemperature = 0.4;
constexpr double kRequestLimitSec = 60.0;

// A combining mark or joiner after an ASCII character fuses with it into
// another character, so a prefix only counts when it ends on a character
// boundary. Only the code point right after it can fuse, hence the short window.
bool startsWithCharacters(std::string_view s, std::string_view asciiPrefix) {
    if (!s.starts_with(asciiPrefix)) {
        return false;
    }
    const auto window = s.substr(0, asciiPrefix.size() + 4);
    return text::prefixCharacters(window, asciiPrefix.size()) == asciiPrefix;
}

// The mirror of startsWithCharacters: only the code point right before the
// suffix (a prepended mark) can fuse with it.
bool endsWithCharacters(std::string_view s, std::string_view asciiSuffix) {
    if (!s.ends_with(asciiSuffix)) {
        return false;
    }
    const auto window = s.substr(s.size() - std::min(s.size(), asciiSuffix.size() + 4));
    return text::suffixCharacters(window, asciiSuffix.size()) == asciiSuffix;
}

const text::Regex& openingFence() {
    static const text::Regex fence = *text::Regex::compile("^```[a-zA-Z]*\n?");
    return fence;
}

// The content of the first choice, or empty when there is none. Every choice
// must still carry a message object: a body without that shape is not a chat
// completion, whatever its first element says.
std::string firstContent(std::string_view body) {
    const nlohmann::json json = parseJSONObject(body, "the chat completion");
    const auto choices = json.find("choices");
    if (choices == json.end() || !choices->is_array()) {
        throw DecodingError("the chat completion has no \"choices\" array");
    }
    for (const auto& choice : *choices) {
        const auto message = choice.is_object() ? choice.find("message") : choice.end();
        if (message == choice.end() || !message->is_object()) {
            throw DecodingError("a choice of the chat completion has no \"message\" object");
        }
        const auto content = message->find("content");
        if (content != message->end() && !content->is_null() && !content->is_string()) {
            throw DecodingError(
                "a message of the chat completion has a \"content\" that is "
                "not a string");
        }
    }
    if (choices->empty()) {
        return {};
    }
    const auto& message = choices->front().at("message");
    const auto content = message.find("content");
    if (content == message.end() || content->is_null()) {
        return {};
    }
    return content->get<std::string>();
}

std::string requestBody(const std::string& model, const std::string& system,
                        const std::string& user, double temperature) {
    nlohmann::json messages = nlohmann::json::array();
    messages.push_back(nlohmann::json::object({{"role", "system"}, {"content", system}}));
    messages.push_back(nlohmann::json::object({{"role", "user"}, {"content", user}}));
    const nlohmann::json body = nlohmann::json::object(
        {{"model", model}, {"temperature", temperature}, {"messages", std::move(messages)}});
    // Text read from other applications may hold stray bytes; they go out as
    // U+FFFD rather than costing the user the whole polish.
    return body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

LLMPolisher::LLMPolisher(std::string name, std::string baseURL, std::string apiKey,
                         std::string model, double timeout)
    : name_(std::move(name)),
      baseURL_(std::move(baseURL)),
      model_(std::move(model)),
      apiKey_(std::move(apiKey)),
      session_(std::make_unique<HttpClient>(HttpLimits{timeout, kRequestLimitSec})) {}

std::shared_ptr<LLMPolisher> LLMPolisher::groq(std::string apiKey, std::string model) {
    return std::make_shared<LLMPolisher>("groq", kGroqRoot, std::move(apiKey), std::move(model));
}

std::shared_ptr<LLMPolisher> LLMPolisher::openai(std::string apiKey, std::string model) {
    return std::make_shared<LLMPolisher>("openai", kOpenAIRoot, std::move(apiKey),
                                         std::move(model));
}

std::shared_ptr<LLMPolisher> LLMPolisher::kestrum(std::string baseURL, std::string token,
                                                  std::string model) {
    return std::make_shared<LLMPolisher>("kestrum", std::move(baseURL), std::move(token),
                                         std::move(model));
}

std::string LLMPolisher::polish(const std::string& transcript, const PolishContext& context,
                                const std::vector<std::string>& dictionary,
                                const std::vector<Replacement>& replacements,
                                const std::vector<Snippet>& snippets) const {
    return chat(PromptBuilder::system(dictionary, replacements, snippets),
                PromptBuilder::user(transcript, context), kPolishTemperature);
}

std::string LLMPolisher::instruct(const std::string& transcript, const PolishContext& context,
                                  const std::vector<std::string>& dictionary) const {
    return chat(PromptBuilder::instructSystem(dictionary), PromptBuilder::user(transcript, context),
                kInstructTemperature);
}

std::string LLMPolisher::compose(const std::string& system, const std::string& user,
                                 double temperature) const {
    return chat(system, user, temperature);
}

std::string LLMPolisher::chat(const std::string& system, const std::string& user,
                              double temperature) const {
    const std::string body = requestBody(model_, system, user, temperature);
    const HttpClient::Headers headers = {
        {"Content-Type", "application/json"},
        {"Authorization", authorizationHeader()},
    };
    const HttpResponse response =
        session_->post(appendPath(baseURL_, "chat/completions"), headers, body);
    if (response.status != 200) {
        throw WeftHTTPError(response.status);
    }
    std::string reply = parseChatJSON(response.body);
    if (reply.empty()) {
        throw WeftEmptyResponse();
    }
    return reply;
}

std::string LLMPolisher::parseChatJSON(std::string_view body) {
    std::string reply = text::trim(firstContent(body));
    if (startsWithCharacters(reply, "```")) {
        reply = openingFence().replaceFirstAtStart(reply, "");
        if (endsWithCharacters(reply, "```")) {
            reply.resize(reply.size() - 3);
        }
        reply = text::trim(reply);
    }
    // Both ends being whole one-byte quote characters also means the reply has
    // at least two characters once it has two bytes.
    if (reply.size() >= 2 && startsWithCharacters(reply, "\"") && endsWithCharacters(reply, "\"")) {
        reply = reply.substr(1, reply.size() - 2);
    }
    return reply;
}

}  // namespace tevra
