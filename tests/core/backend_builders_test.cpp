#include "core/backend_builders.h"

#include <gtest/gtest.h>

#include "polish/llm_polisher.h"
#include "stt/whisper_api_transcriber.h"

namespace tevra {
namespace {

template <typename Backend>
std::vector<std::string> names(const std::vector<std::shared_ptr<const Backend>>& backends) {
    std::vector<std::string> out;
    for (const auto& b : backends) {
        out.push_back(b->name());
    }
    return out;
}

using Names = std::vector<std::string>;

TEST(BackendBuilders, EveryKeyGivesItsServicesInTheChainOrder) {
    WeftSettings settings;
    settings.proxyBaseURL = "https://relay.example/v1";
    const ProviderKeys all = {{Provider::groq, "g"},
                              {Provider::openai, "o"},
                              {Provider::deepinfra, "d"},
                              {Provider::fireworks, "f"}};
    const auto stt = BackendBuilders::buildSTT(settings, all, std::string("tok"));
    EXPECT_EQ(names(stt), (Names{"kestrum", "fireworks", "deepinfra", "groq", "openai"}));
    const auto& relay = dynamic_cast<const WhisperAPITranscriber&>(*stt[0]);
    EXPECT_EQ(relay.baseURL(), "https://relay.example/v1");
    EXPECT_EQ(relay.model(), settings.groqSTTModel) << "the relay runs the Groq models";
    EXPECT_EQ(relay.apiKey(), "tok");
    EXPECT_EQ(dynamic_cast<const WhisperAPITranscriber&>(*stt[1]).model(), "whisper-v3-turbo");

    const auto polishers = BackendBuilders::buildPolishers(settings, all, std::string("tok"));
    EXPECT_EQ(names(polishers), (Names{"kestrum", "groq", "openai"}));
    EXPECT_EQ(dynamic_cast<const LLMPolisher&>(*polishers[0]).model(), "llama-3.3-70b-versatile");
    EXPECT_EQ(dynamic_cast<const LLMPolisher&>(*polishers[2]).model(), "gpt-4o-mini");
}

TEST(BackendBuilders, TheRelayNeedsATokenAndAUsableAddress) {
    WeftSettings settings;
    settings.proxyBaseURL = "https://relay.example/v1";
    EXPECT_EQ(names(BackendBuilders::buildSTT(settings, {}, std::string(""))), Names{});
    EXPECT_EQ(names(BackendBuilders::buildSTT(settings, {}, std::nullopt)), Names{});
    settings.proxyBaseURL = "not a url";
    EXPECT_EQ(names(BackendBuilders::buildSTT(settings, {}, std::string("tok"))), Names{});
    EXPECT_EQ(names(BackendBuilders::buildPolishers(settings, {}, std::string("tok"))), Names{});
}

TEST(BackendBuilders, FireworksAloneGivesSpeechButNoPolish) {
    const ProviderKeys fireworks = {{Provider::fireworks, "f"}};
    WeftSettings settings;
    EXPECT_EQ(names(BackendBuilders::buildSTT(settings, fireworks, std::nullopt)),
              Names{"fireworks"});
    EXPECT_TRUE(BackendBuilders::buildPolishers(settings, fireworks, std::nullopt).empty());
    // The chain stays built when clean-up is off: modes and commands still use it.
    settings.polishEnabled = false;
    EXPECT_EQ(names(BackendBuilders::buildPolishers(settings, {{Provider::openai, "o"}}, {})),
              Names{"openai"});
}

TEST(BackendBuilders, APinnedProviderWithoutAKeyLeavesNothingToTry) {
    WeftSettings settings;
    settings.sttProvider = "openai";
    const auto pipeline =
        BackendBuilders::buildPipeline(settings, {{Provider::groq, "g"}}, nullptr, std::nullopt);
    try {
        pipeline->process(std::vector<int16_t>(1600, 3000), 16000, {});
        FAIL() << "nothing to transcribe with";
    } catch (const RouterError& e) {
        EXPECT_EQ(e.description(), "no transcription backends configured");
    }
}

}  // namespace
}  // namespace tevra
