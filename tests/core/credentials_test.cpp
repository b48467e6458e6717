#include "core/credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/memory_secret_store.h"

namespace tevra {
namespace {

using Credentials::Keys;
using Credentials::Source;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Credentials::Environment environmentOf(std::map<std::string, std::string, std::less<>> vars) {
    return [vars = std::move(vars)](std::string_view name) -> std::optional<std::string> {
        const auto it = vars.find(name);
        return it == vars.end() ? std::nullopt : std::optional(it->second);
    };
}

// The keyring itself, trimming and deleting are tested against the real
// Secret Service; here, which keys are asked of it and in what order.
TEST(Credentials, TheEnvironmentComesFirstAndTheStoreIsAskedOnlyForTheRest) {
    testing::MemorySecretStore store;
    store.seed("GROQ_API_KEY", "from-store");
    store.seed("OPENAI_API_KEY", "openai-store");
    store.seed("DEEPINFRA_API_KEY", "   ");
    store.seed("FIREWORKS_API_KEY", "  fw-store \n");
    store.seed("TEVRA_PROXY_TOKEN", "stored-token\n");
    // An empty variable counts as absent; a set one is taken as it stands.
    const auto env = environmentOf({{"GROQ_API_KEY", " env key "}, {"OPENAI_API_KEY", ""}});
    EXPECT_EQ(Credentials::fetch(store, 6.0, env), (Keys{{Provider::groq, " env key "},
                                                         {Provider::openai, "openai-store"},
                                                         {Provider::fireworks, "fw-store"}}));
    EXPECT_THAT(store.calls(), ElementsAre("lookup OPENAI_API_KEY", "lookup DEEPINFRA_API_KEY",
                                           "lookup FIREWORKS_API_KEY"));
    EXPECT_EQ(Credentials::source(Provider::groq, store, env), Source::environment);
    EXPECT_EQ(Credentials::source(Provider::openai, store, env), Source::keychain);
    EXPECT_EQ(Credentials::source(Provider::deepinfra, store, env), Source::none);
    EXPECT_EQ(Credentials::rawValue(Source::keychain), "keychain");
    EXPECT_EQ(Credentials::proxyToken(store, environmentOf({{"TEVRA_PROXY_TOKEN", ""}})),
              "stored-token");

    testing::MemorySecretStore untouched;
    const auto full = environmentOf({{"GROQ_API_KEY", "g"},
                                     {"OPENAI_API_KEY", "o"},
                                     {"DEEPINFRA_API_KEY", "d"},
                                     {"FIREWORKS_API_KEY", "f"},
                                     {"TEVRA_PROXY_TOKEN", "env-token"}});
    EXPECT_EQ(Credentials::fetch(untouched, 0.0, full).size(), 4u);
    EXPECT_EQ(Credentials::proxyToken(untouched, full), "env-token");
    EXPECT_THAT(untouched.calls(), IsEmpty());

    store.setAvailable(false);
    EXPECT_THAT(Credentials::fetch(store, 6.0, environmentOf({})), IsEmpty());
}

TEST(CredentialsParse, TakesExactProviderNamesTrimmedAndUnquoted) {
    EXPECT_EQ(Credentials::parse("# keys for Tevra\n"
                                 "\n"
                                 "GROQ_API_KEY = gsk_1 \t\n"
                                 "export OPENAI_API_KEY=sk-skipped\n"
                                 "groq_api_key=lower-case-skipped\n"
                                 "DEEPINFRA_API_KEY\n"
                                 "\tFIREWORKS_API_KEY=fw=with=equals\n"
                                 "TEVRA_PROXY_TOKEN=not-a-provider\n"),
              (Keys{{Provider::groq, "gsk_1"}, {Provider::fireworks, "fw=with=equals"}}));
    EXPECT_THAT(Credentials::parse("\n\n=\n"), IsEmpty());
    // One matching pair of quotes goes.
    EXPECT_EQ(Credentials::parse("GROQ_API_KEY = \"gsk quoted\" \n"
                                 "OPENAI_API_KEY='sk-single'\n"
                                 "DEEPINFRA_API_KEY=\"one-sided\n"
                                 "FIREWORKS_API_KEY=\"mixed'\n"),
              (Keys{{Provider::groq, "gsk quoted"},
                    {Provider::openai, "sk-single"},
                    {Provider::deepinfra, "\"one-sided"},
                    {Provider::fireworks, "\"mixed'"}}));
    // A lone quote stays; a pair around nothing leaves nothing; a later line
    // wins unless its value is empty.
    EXPECT_EQ(Credentials::parse("GROQ_API_KEY=\"\nOPENAI_API_KEY=\"\"\nDEEPINFRA_API_KEY=''\n"
                                 "FIREWORKS_API_KEY=first\nFIREWORKS_API_KEY=second\n"
                                 "FIREWORKS_API_KEY=\nFIREWORKS_API_KEY=   "),
              (Keys{{Provider::groq, "\""}, {Provider::fireworks, "second"}}));
}

}  // namespace
}  // namespace tevra
