#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/byte_buffer.h"
#include "base/http_client.h"
#include "base/service_roots.h"
#include "stt/transcription_backend.h"

namespace tevra {

// One client for every service that speaks the OpenAI audio/transcriptions
// protocol; only name, root URL, key and model differ between them.
class WhisperAPITranscriber : public TranscriptionBackend {
public:
    static constexpr double kDefaultTimeout = 30.0;

    // timeout: seconds without any data moving before the request fails.
    WhisperAPITranscriber(std::string name, std::string baseURL, std::string apiKey,
                          std::string model, double timeout = kDefaultTimeout);

    static std::shared_ptr<WhisperAPITranscriber> groq(std::string apiKey, std::string model);
    static std::shared_ptr<WhisperAPITranscriber> openai(std::string apiKey, std::string model);
    static std::shared_ptr<WhisperAPITranscriber> kestrum(std::string baseURL, std::string token,
                                                          std::string model);
    static std::shared_ptr<WhisperAPITranscriber> deepinfra(std::string apiKey, std::string model);
    // The model picks the host: one containing "turbo" goes to the turbo host.
    static std::shared_ptr<WhisperAPITranscriber> fireworks(std::string apiKey, std::string model);

    static constexpr const char* kGroqRoot = ServiceRoots::groq;
    static constexpr const char* kOpenAIRoot = ServiceRoots::openai;
    static constexpr const char* kDeepInfraRoot = "https://api.deepinfra.com/v1/openai";
    static constexpr const char* kFireworksTurboRoot =
        "https://audio-turbo.us-virginia-1.direct.fireworks.ai/v1";
    static constexpr const char* kFireworksProductionRoot =
        "https://audio-prod.us-virginia-1.direct.fireworks.ai/v1";

    std::string name() const override { return name_; }
    const std::string& baseURL() const { return baseURL_; }
    const std::string& model() const { return model_; }
    const std::string& apiKey() const { return apiKey_; }
    std::string authorizationHeader() const { return "Bearer " + apiKey_; }

    Transcript transcribe(std::string_view wav,
                          const std::optional<std::string>& languageHint) const override;

    static ByteBuffer multipartBody(std::string_view boundary, std::string_view wav,
                                    std::string_view model,
                                    const std::optional<std::string>& language);
    static Transcript parseVerboseJSON(std::string_view body);
    // "weft-" and a fresh random UUID in upper case.
    static std::string makeBoundary();

private:
    std::string name_;
    std::string baseURL_;
    std::string model_;
    std::string apiKey_;
    std::unique_ptr<HttpClient> session_;
};

}  // namespace tevra
