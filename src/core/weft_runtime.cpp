#include "core/weft_runtime.h"

#include <algorithm>
#include <chrono>
#include <fstream>

#include "base/iso8601.h"
#include "base/secure_file.h"
#include "core/credentials.h"
#include "store/history_store.h"

namespace tevra {

WeftRuntime::WeftRuntime(std::filesystem::path dataDir, bool fetchKeys,
                         std::shared_ptr<SecretStore> secrets, PipelineBuilder buildPipeline)
    : dataDir_(std::move(dataDir)),
      secrets_(std::move(secrets)),
      pipelineBuilder_(std::move(buildPipeline)) {
    SecureFile::ensureSecureDir(dataDir_);
    settings_ = WeftSettings::load(dataDir_);
    try {
        store_ = std::make_shared<HistoryStore>((dataDir_ / "weft.sqlite").string());
        store_->seedDefaultsIfEmpty();
    } catch (const std::exception&) {
        store_.reset();  // dictation goes on without history
    }
    if (fetchKeys) {
        fetchCredentials();
    }
    pipeline_ = pipelineBuilder_(settings_, keys_, store_, proxyToken_);
}

void WeftRuntime::fetchCredentials() {
    if (!secrets_) {
        return;
    }
    keys_ = Credentials::fetch(*secrets_);
    proxyToken_ = Credentials::proxyToken(*secrets_);
}

void WeftRuntime::reload() {
    settings_ = WeftSettings::load(dataDir_);
    pipeline_ = pipelineBuilder_(settings_, keys_, store_, proxyToken_);
}

void WeftRuntime::refreshKeys() {
    fetchCredentials();
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
