#include "core/credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/keychain.h"
#include "support/memory_secret_store.h"

namespace tevra {
namespace {

using Credentials::Keys;
using Credentials::Source;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::MemorySecretStore;

Credentials::Environment environmentOf(std::map<std::string, std::string, std::less<>> vars) {
    return [vars = std::move(vars)](std::string_view name) -> std::optional<std::string> {
        const auto it = vars.find(name);
        return it == vars.end() ? std::nullopt : std::optional(it->second);
    };
}

TEST(Keychain, ValuesAreTrimmedAndBlankOrUndecodableOnesReadAsNothing) {
    MemorySecretStore store;
    EXPECT_TRUE(Keychain::write(store, "GROQ_API_KEY", " \tgsk_123\r\n"));
    EXPECT_EQ(store.raw("GROQ_API_KEY"), "gsk_123");
    store.seed("OPENAI_API_KEY", "\n  sk-abc \u00a0\n");
    EXPECT_EQ(Keychain::read(store, "OPENAI_API_KEY"), "sk-abc");

    store.seed("DEEPINFRA_API_KEY", " \t\n ");
    store.seed("FIREWORKS_API_KEY", "fw-\xff\xfe");
    EXPECT_EQ(Keychain::read(store, "DEEPINFRA_API_KEY"), std::nullopt);
    EXPECT_EQ(Keychain::read(store, "FIREWORKS_API_KEY"), std::nullopt);
    EXPECT_EQ(Keychain::read(store, "TEVRA_PROXY_TOKEN"), std::nullopt);
}

TEST(Keychain, ABlankWriteDeletesAndSucceedsEvenWithoutAnItem) {
    MemorySecretStore store;
    store.seed("GROQ_API_KEY", "old");
    EXPECT_TRUE(Keychain::write(store, "GROQ_API_KEY", "  \n"));
    EXPECT_EQ(store.raw("GROQ_API_KEY"), std::nullopt);
    EXPECT_TRUE(Keychain::write(store, "GROQ_API_KEY", ""));
    EXPECT_THAT(store.calls(), ElementsAre("erase GROQ_API_KEY", "erase GROQ_API_KEY"));

    store.setAvailable(false);  // an unreachable store refuses, blank or not
    EXPECT_FALSE(Keychain::write(store, "GROQ_API_KEY", "new"));
    EXPECT_FALSE(Keychain::write(store, "GROQ_API_KEY", " "));
    EXPECT_FALSE(Keychain::remove(store, "GROQ_API_KEY"));
}

TEST(Credentials, FetchTakesTheEnvironmentFirstAndAsksTheStoreOnlyForTheRest) {
    MemorySecretStore store;
    store.seed("GROQ_API_KEY", "from-store");
    store.seed("OPENAI_API_KEY", "openai-store");
    store.seed("FIREWORKS_API_KEY", "  fw-store \n");
    // An empty variable counts as absent; a set one is taken as it stands.
    const auto env = environmentOf({{"GROQ_API_KEY", " env key "}, {"OPENAI_API_KEY", ""}});

    EXPECT_EQ(Credentials::fetch(store, 6.0, env), (Keys{{Provider::groq, " env key "},
                                                         {Provider::openai, "openai-store"},
                                                         {Provider::fireworks, "fw-store"}}));
    EXPECT_THAT(store.calls(), ElementsAre("lookup OPENAI_API_KEY", "lookup DEEPINFRA_API_KEY",
                                           "lookup FIREWORKS_API_KEY"));

    store.setAvailable(false);
    EXPECT_THAT(Credentials::fetch(store, 6.0, environmentOf({})), IsEmpty());
}

TEST(Credentials, AllFourInTheEnvironmentLeaveTheStoreUntouched) {
    MemorySecretStore store;
    const auto env = environmentOf({{"GROQ_API_KEY", "g"},
                                    {"OPENAI_API_KEY", "o"},
                                    {"DEEPINFRA_API_KEY", "d"},
                                    {"FIREWORKS_API_KEY", "f"}});
    EXPECT_EQ(Credentials::fetch(store, 0.0, env).size(), 4u);
    EXPECT_THAT(store.calls(), IsEmpty());
}

TEST(Credentials, ProxyTokenFromTheEnvironmentWhenNotEmptyElseTheStore) {
    MemorySecretStore store;
    store.seed("TEVRA_PROXY_TOKEN", "stored-token\n");
    EXPECT_EQ(Credentials::proxyToken(store, environmentOf({{"TEVRA_PROXY_TOKEN", "env-token"}})),
              "env-token");
    EXPECT_THAT(store.calls(), IsEmpty());
    EXPECT_EQ(Credentials::proxyToken(store, environmentOf({{"TEVRA_PROXY_TOKEN", ""}})),
              "stored-token");
}

TEST(Credentials, SourceSaysWhereEachKeyComesFrom) {
    MemorySecretStore store;
    store.seed("GROQ_API_KEY", "store");
    store.seed("OPENAI_API_KEY", "store");
    store.seed("DEEPINFRA_API_KEY", "   ");
    const auto env = environmentOf({{"GROQ_API_KEY", "env"}, {"FIREWORKS_API_KEY", ""}});
    EXPECT_EQ(Credentials::source(Provider::groq, store, env), Source::environment);
    EXPECT_EQ(Credentials::source(Provider::openai, store, env), Source::keychain);
    EXPECT_EQ(Credentials::source(Provider::deepinfra, store, env), Source::none);
    EXPECT_EQ(Credentials::source(Provider::fireworks, store, env), Source::none);
    EXPECT_EQ(Credentials::rawValue(Source::keychain), "keychain");
}

TEST(Credentials, SaveWritesUnderTheProvidersAccountAndABlankKeyRemovesIt) {
    MemorySecretStore store;
    EXPECT_TRUE(Credentials::save(Provider::deepinfra, " di-key\n", store));
    EXPECT_EQ(store.raw("DEEPINFRA_API_KEY"), "di-key");
    EXPECT_TRUE(Credentials::save(Provider::deepinfra, "\t", store));
    EXPECT_EQ(store.raw("DEEPINFRA_API_KEY"), std::nullopt);
}

TEST(CredentialsParse, TakesExactProviderNamesAndTrimsBlanksAndTabs) {
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
}

TEST(CredentialsParse, OneMatchingPairOfQuotesGoes) {
    EXPECT_EQ(Credentials::parse("GROQ_API_KEY = \"gsk quoted\" \n"
                                 "OPENAI_API_KEY='sk-single'\n"
                                 "DEEPINFRA_API_KEY=\"one-sided\n"
                                 "FIREWORKS_API_KEY=\"mixed'\n"),
              (Keys{{Provider::groq, "gsk quoted"},
                    {Provider::openai, "sk-single"},
                    {Provider::deepinfra, "\"one-sided"},
                    {Provider::fireworks, "\"mixed'"}}));
    // A lone quote is one character and stays; a pair around nothing leaves nothing.
    EXPECT_EQ(Credentials::parse("GROQ_API_KEY=\"\nOPENAI_API_KEY=\"\"\nDEEPINFRA_API_KEY=''"),
              (Keys{{Provider::groq, "\""}}));
}

TEST(CredentialsParse, ALaterLineWinsUnlessItsValueIsEmpty) {
    EXPECT_EQ(Credentials::parse("GROQ_API_KEY=first\nGROQ_API_KEY=second\nGROQ_API_KEY=\n"
                                 "GROQ_API_KEY=\"\"\nGROQ_API_KEY=   "),
              (Keys{{Provider::groq, "second"}}));
}

}  // namespace
}  // namespace tevra
