#include "core/weft_runtime.h"

#include <algorithm>
#include <chrono>
#include <fstream>

#include "base/iso8601.h"
#include "base/secure_file.h"
#include "core/credentials.h"
#include "store/database_files.h"
#include "store/history_store.h"
#include "store/store_open_error.h"

namespace tevra {

WeftRuntime::WeftRuntime(std::filesystem::path dataDir, bool fetchKeys,
                         std::shared_ptr<SecretStore> secrets, PipelineBuilder buildPipeline)
    : dataDir_(std::move(dataDir)),
      secrets_(std::move(secrets)),
      pipelineBuilder_(std::move(buildPipeline)) {
    SecureFile::ensureSecureDir(dataDir_);
    settings_ = WeftSettings::load(dataDir_);
    openStore();
    if (fetchKeys) {
        fetchCredentials();
    }
    pipeline_ = pipelineBuilder_(settings_, keys_, store_, proxyToken_);
}

void WeftRuntime::openStore() {
    const auto path = dataDir_ / "weft.sqlite";
    try {
        try {
            store_ = std::make_shared<HistoryStore>(path.string());
        } catch (const StoreDamagedError& e) {
            // Never deleted, and never in the way of a history from now on.
            const auto aside = DatabaseFiles::moveAside(path, std::chrono::system_clock::now());
            storeNotice_ = "the history database was damaged (" + e.reason() +
                           "); it was moved to " + aside.string() + " and a fresh one started";
            store_ = std::make_shared<HistoryStore>(path.string());
        }
        store_->seedDefaultsIfEmpty();
    } catch (const std::exception& e) {
        store_.reset();  // dictation goes on without history
        storeNotice_ = (storeNotice_ ? *storeNotice_ + ", but " : std::string()) +
                       "the history database could not be opened (" + describe(e) +
                       "); going on without history";
    }
}

void WeftRuntime::fetchCredentials() {
    // Without a keyring the environment still counts: it comes first anyway.
    static NoSecretStore none;
    SecretStore& store = secrets_ ? *secrets_ : none;
    keys_ = Credentials::fetch(store);
    proxyToken_ = Credentials::proxyToken(store);
}

void WeftRuntime::reload() {
    settings_ = WeftSettings::load(dataDir_);
    pipeline_ = pipelineBuilder_(settings_, keys_, store_, proxyToken_);
}

void WeftRuntime::refreshKeys() {
    fetchCredentials();
    reload();
}

void WeftRuntime::useCredentials(ProviderKeys keys, std::optional<std::string> proxyToken) {
    keys_ = std::move(keys);
    proxyToken_ = std::move(proxyToken);
    reload();
}

bool WeftRuntime::hasCloudSTT() const {
    if (proxyToken_ && !proxyToken_->empty()) {
        return true;
    }
    if (settings_.sttProvider == "local") {
        return false;
    }
    return !keys_.empty();
}

std::string WeftRuntime::keyStatusDescription() const {
    static constexpr std::pair<Provider, const char*> kOrder[] = {
        {Provider::fireworks, "fireworks"},
        {Provider::deepinfra, "deepinfra"},
        {Provider::groq, "groq"},
        {Provider::openai, "openai"},
    };
    std::string text;
    for (const auto& [provider, name] : kOrder) {
        if (!text.empty()) {
            text += "  ";
        }
        text += name;
        text += keys_.contains(provider) ? ": \u2713" : ": \u2013";
    }
    return text;
}

std::optional<std::filesystem::path> WeftRuntime::saveFailedAudio(std::string_view wav) const {
    const auto dir = dataDir_ / "failed";
    std::error_code ignored;
    std::filesystem::create_directories(dir, ignored);
    std::string stamp = iso8601UTC(std::chrono::system_clock::now());
    std::replace(stamp.begin(), stamp.end(), ':', '-');
    const auto path = dir / ("dictation-" + stamp + ".wav");
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(wav.data(), static_cast<std::streamsize>(wav.size()));
    out.close();
    if (!out) {
        return std::nullopt;
    }
    return path;
}

std::vector<std::shared_ptr<const PolishBackend>> WeftRuntime::polishers() const {
    return buildPolishers(settings_, keys_, proxyToken_);
}

std::shared_ptr<TranscriptionRouter> WeftRuntime::transcriptionRouter() const {
    return std::make_shared<TranscriptionRouter>(buildSTT(settings_, keys_, proxyToken_));
}

}  // namespace tevra
