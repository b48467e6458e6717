#include "stt/whisper_api_transcriber.h"

#include <nlohmann/json.hpp>

#include "base/http_errors.h"
#include "base/text.h"
#include "base/uuid.h"

namespace tevra {

WhisperAPITranscriber::WhisperAPITranscriber(std::string name, std::string baseURL,
                                             std::string apiKey, std::string model, double timeout)
    : name_(std::move(name)),
      baseURL_(std::move(baseURL)),
      model_(std::move(model)),
      apiKey_(std::move(apiKey)),
      session_(std::make_unique<HttpClient>(HttpLimits{timeout, 60.0})) {}

std::shared_ptr<WhisperAPITranscriber> WhisperAPITranscriber::groq(std::string apiKey,
                                                                   std::string model) {
    return std::make_shared<WhisperAPITranscriber>("groq", kGroqRoot, std::move(apiKey),
                                                   std::move(model));
}

std::shared_ptr<WhisperAPITranscriber> WhisperAPITranscriber::openai(std::string apiKey,
                                                                     std::string model) {
    return std::make_shared<WhisperAPITranscriber>("openai", kOpenAIRoot, std::move(apiKey),
                                                   std::move(model));
}

std::shared_ptr<WhisperAPITranscriber> WhisperAPITranscriber::kestrum(std::string baseURL,
                                                                      std::string token,
                                                                      std::string model) {
    return std::make_shared<WhisperAPITranscriber>("kestrum", std::move(baseURL), std::move(token),
                                                   std::move(model));
}

std::shared_ptr<WhisperAPITranscriber> WhisperAPITranscriber::deepinfra(std::string apiKey,
                                                                        std::string model) {
    return std::make_shared<WhisperAPITranscriber>("deepinfra", kDeepInfraRoot, std::move(apiKey),
                                                   std::move(model));
}

std::shared_ptr<WhisperAPITranscriber> WhisperAPITranscriber::fireworks(std::string apiKey,
                                                                        std::string model) {
    const char* root =
        model.find("turbo") != std::string::npos ? kFireworksTurboRoot : kFireworksProductionRoot;
    return std::make_shared<WhisperAPITranscriber>("fireworks", root, std::move(apiKey),
                                                   std::move(model));
}

std::string WhisperAPITranscriber::makeBoundary() {
    return "weft-" + newUUID();
}

ByteBuffer WhisperAPITranscriber::multipartBody(std::string_view boundary, std::string_view wav,
                                                std::string_view model,
                                                const std::optional<std::string>& language) {
    ByteBuffer body;
    body.reserve(wav.size() + 512 + 4 * boundary.size());
    auto field = [&](std::string_view fieldName, std::string_view value) {
        body += "--";
        body += boundary;
        body += "\r\nContent-Disposition: form-data; name=\"";
        body += fieldName;
        body += "\"\r\n\r\n";
        body += value;
        body += "\r\n";
    };
    field("model", model);
    field("response_format", "verbose_json");
    if (language && !language->empty()) {
        field("language", *language);
    }
    body += "--";
    body += boundary;
    body +=
        "\r\nContent-Disposition: form-data; name=\"file\"; filename=\"audio.wav\"\r\n"
        "Content-Type: audio/wav\r\n\r\n";
    body += wav;
    body += "\r\n--";
    body += boundary;
    body += "--\r\n";
    return body;
}

Transcript WhisperAPITranscriber::parseVerboseJSON(std::string_view body) {
    const nlohmann::json json = parseJSONObject(body, "the transcription");
    const auto text = json.find("text");
    if (text == json.end() || !text->is_string()) {
        throw DecodingError("the transcription has no \"text\" string");
    }
    Transcript transcript;
    transcript.text = text::trim(text->get<std::string>());
    if (auto it = json.find("language"); it != json.end() && !it->is_null()) {
        if (!it->is_string()) {
            throw DecodingError("the transcription's \"language\" is not a string");
        }
        transcript.language = it->get<std::string>();
    }
    if (auto it = json.find("duration"); it != json.end() && !it->is_null()) {
        if (!it->is_number()) {
            throw DecodingError("the transcription's \"duration\" is not a number");
        }
        transcript.durationSec = it->get<double>();
    }
    return transcript;
}

Transcript WhisperAPITranscriber::transcribe(std::string_view wav,
                                             const std::optional<std::string>& languageHint) const {
    const std::string boundary = makeBoundary();
    const ByteBuffer body = multipartBody(boundary, wav, model_, languageHint);
    const HttpClient::Headers headers = {
        {"Content-Type", "multipart/form-data; boundary=" + boundary},
        {"Authorization", authorizationHeader()},
    };
    const HttpResponse response =
        session_->post(appendPath(baseURL_, "audio/transcriptions"), headers, body);
    if (response.status != 200) {
        throw WeftHTTPError(response.status);
    }
    return parseVerboseJSON(response.body);
}

}  // namespace tevra
