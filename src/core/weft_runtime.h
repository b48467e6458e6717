#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/pipeline.h"
#include "core/provider.h"
#include "core/secret_store.h"
#include "core/weft_settings.h"

namespace tevra {

class HistoryStore;

namespace WeftCoreInfo {
inline constexpr const char* version = TEVRA_VERSION;
}

// Owns what a running Tevra needs: the data directory, the settings, the store,
// the credentials and the current pipeline. Lives on the main thread; the
// pipeline is swapped whole on every change, so a dictation under way finishes
// on the one it started with.
class WeftRuntime {
public:
    inline static const std::vector<std::string>& defaultSTTOrder = WeftSettings::defaultSTTOrder;

    // Builds the pipeline from what the runtime holds, at start and on every reload.
    using PipelineBuilder = std::function<std::shared_ptr<const Pipeline>(
        const WeftSettings&, const ProviderKeys&, std::shared_ptr<PipelineStore>,
        const std::optional<std::string>& proxyToken)>;

    // secrets: the keyring, or null for none (the environment still counts);
    // with fetchKeys false neither is asked and the keys stay empty. buildPipeline: the backends of
    // the settings by default; a program that brings its own backends passes its own.
    WeftRuntime(std::filesystem::path dataDir, bool fetchKeys, std::shared_ptr<SecretStore> secrets,
                PipelineBuilder buildPipeline = WeftRuntime::buildPipeline);

    const std::filesystem::path& dataDir() const { return dataDir_; }
    const WeftSettings& settings() const { return settings_; }
    const std::shared_ptr<HistoryStore>& store() const { return store_; }
    const ProviderKeys& keys() const { return keys_; }
    const std::optional<std::string>& proxyToken() const { return proxyToken_; }
    // The keyring the credentials come from; null when there is none.
    const std::shared_ptr<SecretStore>& secrets() const { return secrets_; }
    std::shared_ptr<const Pipeline> pipeline() const { return pipeline_; }
    // What became of the history database at start when it did not simply
    // open, as a sentence for the log and the terminal: a damaged one moved
    // aside (and where to), or none at all.
    const std::optional<std::string>& storeNotice() const { return storeNotice_; }

    // Re-reads the settings and rebuilds the pipeline; credentials stay.
    void reload();
    // Re-reads every credential, then reloads.
    void refreshKeys();
    // Takes credentials read elsewhere (off the main thread, say), then reloads.
    void useCredentials(ProviderKeys keys, std::optional<std::string> proxyToken);

    bool hasCloudSTT() const;
    // "fireworks: ✓  deepinfra: –  groq: ✓  openai: –"
    std::string keyStatusDescription() const;

    // Keeps a recording whose processing failed under "failed/", so the speech
    // is not lost. Returns where it went, or nothing when it could not be written.
    std::optional<std::filesystem::path> saveFailedAudio(std::string_view wav) const;

    std::vector<std::shared_ptr<const PolishBackend>> polishers() const;
    std::shared_ptr<TranscriptionRouter> transcriptionRouter() const;

    // The backends of the settings that the keys at hand allow, in the order
    // BackendChain decides. A relay address that is not a URL leaves the
    // relay out, silently.
    static std::vector<std::shared_ptr<const TranscriptionBackend>> buildSTT(
        const WeftSettings& settings, const ProviderKeys& keys,
        const std::optional<std::string>& proxyToken);
    static std::vector<std::shared_ptr<const PolishBackend>> buildPolishers(
        const WeftSettings& settings, const ProviderKeys& keys,
        const std::optional<std::string>& proxyToken);
    static std::shared_ptr<const Pipeline> buildPipeline(
        const WeftSettings& settings, const ProviderKeys& keys,
        std::shared_ptr<PipelineStore> store, const std::optional<std::string>& proxyToken);

private:
    void openStore();
    void fetchCredentials();

    std::filesystem::path dataDir_;
    std::shared_ptr<SecretStore> secrets_;
    WeftSettings settings_;
    std::shared_ptr<HistoryStore> store_;
    std::optional<std::string> storeNotice_;
    ProviderKeys keys_;
    std::optional<std::string> proxyToken_;
    PipelineBuilder pipelineBuilder_;
    std::shared_ptr<const Pipeline> pipeline_;
};

}  // namespace tevra
