#include <map>
#include <set>

#include "base/http_client.h"
#include "core/backend_chain.h"
#include "core/weft_runtime.h"
#include "polish/llm_polisher.h"
#include "stt/whisper_api_transcriber.h"

namespace tevra {
namespace {

bool relayUsable(const WeftSettings& settings, const std::optional<std::string>& proxyToken) {
    return proxyToken && !proxyToken->empty() && isValidURL(settings.proxyBaseURL);
}

const std::string* keyFor(const ProviderKeys& keys, Provider provider) {
    const auto it = keys.find(provider);
    return it == keys.end() ? nullptr : &it->second;
}

// Picks the named backends out of the map, in the chain's order.
template <typename Backend>
std::vector<std::shared_ptr<const Backend>> inOrder(
    const std::map<std::string, std::shared_ptr<const Backend>>& byName,
    const std::vector<std::string>& chain) {
    std::vector<std::shared_ptr<const Backend>> backends;
    for (const auto& name : chain) {
        if (const auto it = byName.find(name); it != byName.end()) {
            backends.push_back(it->second);
        }
    }
    return backends;
}

template <typename Backend>
std::set<std::string> availableWithoutRelay(
    const std::map<std::string, std::shared_ptr<const Backend>>& byName) {
    std::set<std::string> names;
    for (const auto& [name, backend] : byName) {
        if (name != "kestrum") {
            names.insert(name);
        }
    }
    return names;
}

}  // namespace

std::vector<std::shared_ptr<const TranscriptionBackend>> WeftRuntime::buildSTT(
    const WeftSettings& settings, const ProviderKeys& keys,
    const std::optional<std::string>& proxyToken) {
    std::map<std::string, std::shared_ptr<const TranscriptionBackend>> byName;
    if (relayUsable(settings, proxyToken)) {
        // The relay runs the Groq model names.
        byName["kestrum"] = WhisperAPITranscriber::kestrum(settings.proxyBaseURL, *proxyToken,
                                                           settings.groqSTTModel);
    }
    if (const auto* key = keyFor(keys, Provider::deepinfra)) {
        byName["deepinfra"] = WhisperAPITranscriber::deepinfra(*key, settings.deepinfraSTTModel);
    }
    if (const auto* key = keyFor(keys, Provider::fireworks)) {
        byName["fireworks"] = WhisperAPITranscriber::fireworks(*key, settings.fireworksSTTModel);
    }
    if (const auto* key = keyFor(keys, Provider::groq)) {
        byName["groq"] = WhisperAPITranscriber::groq(*key, settings.groqSTTModel);
    }
    if (const auto* key = keyFor(keys, Provider::openai)) {
        byName["openai"] = WhisperAPITranscriber::openai(*key, settings.openaiSTTModel);
    }
    const auto chain = BackendChain::stt(settings.sttProvider, settings.sttOrder, defaultSTTOrder,
                                         availableWithoutRelay(byName), byName.contains("kestrum"));
    return inOrder(byName, chain);
}

std::vector<std::shared_ptr<const PolishBackend>> WeftRuntime::buildPolishers(
    const WeftSettings& settings, const ProviderKeys& keys,
    const std::optional<std::string>& proxyToken) {
    std::map<std::string, std::shared_ptr<const PolishBackend>> byName;
    if (relayUsable(settings, proxyToken)) {
        byName["kestrum"] =
            LLMPolisher::kestrum(settings.proxyBaseURL, *proxyToken, settings.groqLLMModel);
    }
    if (const auto* key = keyFor(keys, Provider::groq)) {
        byName["groq"] = LLMPolisher::groq(*key, settings.groqLLMModel);
    }
    if (const auto* key = keyFor(keys, Provider::openai)) {
        byName["openai"] = LLMPolisher::openai(*key, settings.openaiLLMModel);
    }
    const auto chain = BackendChain::polish(settings.polishProvider, availableWithoutRelay(byName),
                                            byName.contains("kestrum"));
    return inOrder(byName, chain);
}

std::shared_ptr<const Pipeline> WeftRuntime::buildPipeline(
    const WeftSettings& settings, const ProviderKeys& keys, std::shared_ptr<PipelineStore> store,
    const std::optional<std::string>& proxyToken) {
    auto router = std::make_shared<TranscriptionRouter>(buildSTT(settings, keys, proxyToken));
    return std::make_shared<Pipeline>(std::move(router), buildPolishers(settings, keys, proxyToken),
                                      std::move(store), settings);
}

}  // namespace tevra
