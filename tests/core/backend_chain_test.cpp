#include "core/backend_chain.h"

#include <gtest/gtest.h>

namespace tevra {
namespace {

using Names = std::vector<std::string>;
const Names kDefaultOrder = {"fireworks", "deepinfra", "groq", "openai"};

TEST(BackendChain, SpeechFollowsTheOrderOfTheUserOrTheDefault) {
    EXPECT_EQ(BackendChain::stt("auto", {}, kDefaultOrder, {"groq"}, false), Names{"groq"});
    EXPECT_EQ(BackendChain::stt("", {}, kDefaultOrder, {"openai", "fireworks"}, false),
              (Names{"fireworks", "openai"}));
    EXPECT_EQ(BackendChain::stt("auto", {"openai", "whisper-local", "groq"}, kDefaultOrder,
                                {"groq", "openai", "deepinfra"}, false),
              (Names{"openai", "groq"}))
        << "a custom order drops unknown and unavailable names, and does not add the rest";
    EXPECT_EQ(BackendChain::stt("auto", {}, kDefaultOrder, {}, true), Names{"kestrum"});
}

TEST(BackendChain, APinnedSpeechProviderNeedsItsKeyButNeverDisplacesTheRelay) {
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

}  // namespace
}  // namespace tevra
