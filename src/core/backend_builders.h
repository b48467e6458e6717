#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/pipeline.h"
#include "core/pipeline_store.h"
#include "core/provider.h"
#include "core/weft_settings.h"
#include "polish/polish_backend.h"
#include "stt/transcription_backend.h"

namespace tevra {

using ProviderKeys = std::map<Provider, std::string>;

// Turns settings and the credentials at hand into the backends to try, in the
// order BackendChain decides. A relay address that is not a URL leaves the relay
// out, silently.
namespace BackendBuilders {

inline const std::vector<std::string> defaultSTTOrder = {"fireworks", "deepinfra", "groq",
                                                         "openai"};

std::vector<std::shared_ptr<const TranscriptionBackend>> buildSTT(
    const WeftSettings& settings, const ProviderKeys& keys,
    const std::optional<std::string>& proxyToken);

std::vector<std::shared_ptr<const PolishBackend>> buildPolishers(
    const WeftSettings& settings, const ProviderKeys& keys,
    const std::optional<std::string>& proxyToken);

std::shared_ptr<const Pipeline> buildPipeline(const WeftSettings& settings,
                                              const ProviderKeys& keys,
                                              std::shared_ptr<PipelineStore> store,
                                              const std::optional<std::string>& proxyToken);

}  // namespace BackendBuilders
}  // namespace tevra
