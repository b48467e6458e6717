#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/http_client.h"
#include "base/service_roots.h"
#include "polish/polish_backend.h"

namespace tevra {

// One polisher for every service that speaks the OpenAI chat/completions
// protocol (Groq, OpenAI, the hosted relay); only name, root URL, key and model
// differ. Each call is a fresh two-message conversation.
class LLMPolisher : public PolishBackend {
public:
    static constexpr double kDefaultTimeout = 20.0;

    static constexpr const char* kGroqRoot = ServiceRoots::groq;
    static constexpr const char* kOpenAIRoot = ServiceRoots::openai;

    // timeout: seconds without any data moving before the request fails; the
    // whole request may take at most 60 seconds.
    LLMPolisher(std::string name, std::string baseURL, std::string apiKey, std::string model,
                double timeout = kDefaultTimeout);

    static std::shared_ptr<LLMPolisher> groq(std::string apiKey, std::string model);
    static std::shared_ptr<LLMPolisher> openai(std::string apiKey, std::string model);
    static std::shared_ptr<LLMPolisher> kestrum(std::string baseURL, std::string token,
                                                std::string model);

    std::string name() const override { return name_; }
    const std::string& baseURL() const { return baseURL_; }
    const std::string& model() const { return model_; }
    const std::string& apiKey() const { return apiKey_; }
    const HttpClient& session() const { return *session_; }
    std::string authorizationHeader() const { return "Bearer " + apiKey_; }

    std::string polish(const std::string& transcript, const PolishContext& context,
                       const std::vector<std::string>& dictionary,
                       const std::vector<Replacement>& replacements,
                       const std::vector<Snippet>& snippets) const override;

    std::string instruct(const std::string& transcript, const PolishContext& context,
                         const std::vector<std::string>& dictionary) const override;

    using PolishBackend::compose;
    std::string compose(const std::string& system, const std::string& user,
                        double temperature) const override;

    // The text of the first choice, cleaned of a surrounding code fence and of
    // one pair of surrounding double quotes; empty when there is no choice or
    // no content. Throws DecodingError when the body is not a chat completion.
    static std::string parseChatJSON(std::string_view body);

private:
    std::string chat(const std::string& system, const std::string& user, double temperature) const;

    std::string name_;
    std::string baseURL_;
    std::string model_;
    std::string apiKey_;
    std::unique_ptr<HttpClient> session_;
};

}  // namespace tevra
