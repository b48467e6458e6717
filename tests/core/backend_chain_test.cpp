#include "core/backend_chain.h"

#include <gtest/gtest.h>

#include "core/weft_runtime.h"
#include "polish/llm_polisher.h"
#include "stt/whisper_api_transcriber.h"

namespace tevra {
namespace {

using Names = std::vector<std::string>;
const Names kDefaultOrder = {"fireworks", "deepinfra", "groq", "openai"};

template <typename Backend>
Names names(const std::vector<std::shared_ptr<const Backend>>& backends) {
    Names out;
    for (const auto& b : backends) {
        out.push_back(b->name());
    }
    return out;
}

TEST(BackendChain, SpeechFollowsTheUsersOrderOrTheDefaultAndAPinNeedsItsKey) {
    EXPECT_EQ(BackendChain::stt("auto", {}, kDefaultOrder, {"groq"}, false), Names{"groq"});
    EXPECT_EQ(BackendChain::stt("", {}, kDefaultOrder, {"openai", "fireworks"}, false),
              (Names{"fireworks", "openai"}));
    EXPECT_EQ(BackendChain::stt("auto", {"openai", "whisper-local", "groq"}, kDefaultOrder,
                                {"groq", "openai", "deepinfra"}, false),
              (Names{"openai", "groq"}))
        << "a custom order drops unknown and unavailable names, and does not add the rest";
    EXPECT_EQ(BackendChain::stt("auto", {}, kDefaultOrder, {}, true), Names{"kestrum"});
    // A pinned provider never displaces the relay.
    EXPECT_EQ(BackendChain::stt("openai", {}, kDefaultOrder, {"groq"}, true), Names{"kestrum"});
    EXPECT_EQ(BackendChain::stt("openai", {}, kDefaultOrder, {"groq"}, false), Names{});
    EXPECT_EQ(BackendChain::stt("groq", {"openai"}, kDefaultOrder, {"groq", "openai"}, true),
              (Names{"kestrum", "groq"}));
}

TEST(BackendChain, PolishChoosesAmongTheLanguageModels) {
    EXPECT_EQ(BackendChain::polish("rules", {"groq", "openai"}, true), Names{});
    EXPECT_EQ(BackendChain::polish("auto", {"openai"}, true), (Names{"kestrum", "openai"}));
    EXPECT_EQ(BackendChain::polish("auto", {"openai", "groq", "fireworks"}, false),
              (Names{"groq", "openai"}));
    EXPECT_EQ(BackendChain::polish("groq", {"openai"}, false), Names{});
    EXPECT_EQ(BackendChain::polish("openai", {"openai", "groq"}, true),
              (Names{"kestrum", "openai"}));
    EXPECT_EQ(BackendChain::polish("something-else", {"groq"}, false), Names{"groq"});
}

TEST(WeftRuntimeBackends, EveryKeyGivesItsServicesAndTheRelayNeedsATokenAndAnAddress) {
    WeftSettings settings;
    settings.proxyBaseURL = "https://relay.example/v1";
    const ProviderKeys all = {{Provider::groq, "g"},
                              {Provider::openai, "o"},
                              {Provider::deepinfra, "d"},
                              {Provider::fireworks, "f"}};
    const auto stt = WeftRuntime::buildSTT(settings, all, std::string("tok"));
    EXPECT_EQ(names(stt), (Names{"kestrum", "fireworks", "deepinfra", "groq", "openai"}));
    const auto& relay = dynamic_cast<const WhisperAPITranscriber&>(*stt[0]);
    EXPECT_EQ(relay.baseURL(), "https://relay.example/v1");
    EXPECT_EQ(relay.model(), settings.groqSTTModel) << "the relay runs the Groq models";
    EXPECT_EQ(relay.apiKey(), "tok");
    EXPECT_EQ(dynamic_cast<const WhisperAPITranscriber&>(*stt[1]).model(), "whisper-v3-turbo");

    const auto polishers = WeftRuntime::buildPolishers(settings, all, std::string("tok"));
    EXPECT_EQ(names(polishers), (Names{"kestrum", "groq", "openai"}));
    EXPECT_EQ(dynamic_cast<const LLMPolisher&>(*polishers[0]).model(), "llama-3.3-70b-versatile");
    EXPECT_EQ(dynamic_cast<const LLMPolisher&>(*polishers[2]).model(), "gpt-4o-mini");

    EXPECT_EQ(names(WeftRuntime::buildSTT(settings, {}, std::string(""))), Names{});
    EXPECT_EQ(names(WeftRuntime::buildSTT(settings, {}, std::nullopt)), Names{});
    settings.proxyBaseURL = "not a url";
    EXPECT_EQ(names(WeftRuntime::buildSTT(settings, {}, std::string("tok"))), Names{});
    EXPECT_EQ(names(WeftRuntime::buildPolishers(settings, {}, std::string("tok"))), Names{});
}

TEST(WeftRuntimeBackends, FireworksAloneGivesSpeechButNoPolish) {
    const ProviderKeys fireworks = {{Provider::fireworks, "f"}};
    WeftSettings settings;
    EXPECT_EQ(names(WeftRuntime::buildSTT(settings, fireworks, std::nullopt)), Names{"fireworks"});
    EXPECT_TRUE(WeftRuntime::buildPolishers(settings, fireworks, std::nullopt).empty());
    // The chain stays built when clean-up is off: modes and commands still use it.
    settings.polishEnabled = false;
    EXPECT_EQ(names(WeftRuntime::buildPolishers(settings, {{Provider::openai, "o"}}, {})),
              Names{"openai"});

    // A pinned provider without its key leaves nothing to try.
    settings.sttProvider = "openai";
    try {
        WeftRuntime::buildPipeline(settings, fireworks, nullptr, std::nullopt)
            ->process(std::vector<int16_t>(1600, 3000), 16000, {});
        ADD_FAILURE() << "nothing to transcribe with";
    } catch (const RouterError& e) {
        EXPECT_EQ(e.description(), "no transcription backends configured");
    }
}

}  // namespace
}  // namespace tevra
