#include "core/weft_runtime.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "store/history_store.h"
#include "support/loopback_server.h"
#include "support/memory_secret_store.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using testing::MemorySecretStore;

class WeftRuntimeTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"GROQ_API_KEY", "OPENAI_API_KEY", "DEEPINFRA_API_KEY",
                                 "FIREWORKS_API_KEY", "TEVRA_PROXY_TOKEN"}) {
            unsetenv(name);
        }
        service.server().Post(
            "/v1/audio/transcriptions", [](const httplib::Request&, httplib::Response& res) {
                res.set_content(R"({"text":"kept without a store"})", "application/json");
            });
        service.start();
    }
    void writeSettings(const nlohmann::json& json) {
        fs::create_directories(dir.path());
        std::ofstream(dir / "settings.json") << json.dump();
    }

    testing::TempDir dir;
    testing::LoopbackServer service;
};

TEST_F(WeftRuntimeTest, DictationWorksWhenTheDatabaseCannotBeOpened) {
    writeSettings({{"proxyBaseURL", service.baseURL() + "/v1"}, {"polishProvider", "rules"}});
    auto secrets = std::make_shared<MemorySecretStore>();
    secrets->store("TEVRA_PROXY_TOKEN", "tok");
    // A directory where the database file belongs; then a file that is not SQLite.
    fs::create_directories(dir / "weft.sqlite");
    for (int attempt = 0; attempt < 2; ++attempt) {
        WeftRuntime runtime(dir.path(), true, secrets);
        EXPECT_EQ(runtime.store(), nullptr);
        const auto result =
            runtime.pipeline()->process(std::vector<int16_t>(16000, 2000), 16000, {});
        EXPECT_EQ(result.polished, "Kept without a store.");
        EXPECT_EQ(result.sttBackend, "kestrum");

        fs::remove_all(dir / "weft.sqlite");
        std::ofstream(dir / "weft.sqlite") << std::string(4096, 'x');
    }
}

TEST_F(WeftRuntimeTest, OpensAndSeedsTheStoreReloadsSettingsAndKeepsFailedAudio) {
    WeftRuntime runtime(dir.path(), false, nullptr);
    ASSERT_NE(runtime.store(), nullptr);
    EXPECT_FALSE(runtime.store()->modes().empty()) << "the built-in voices are seeded";
    EXPECT_EQ(testing::modeOf(dir.path()), 0700u);
    EXPECT_TRUE(runtime.keys().empty());
    EXPECT_FALSE(runtime.hasCloudSTT());

    auto before = runtime.pipeline();
    writeSettings({{"languageHint", "pl"}});
    runtime.reload();
    EXPECT_EQ(runtime.settings().languageHint, "pl");
    EXPECT_NE(runtime.pipeline(), before) << "the pipeline is swapped whole";
    EXPECT_EQ(before->settings().languageHint, "") << "the old pipeline keeps its settings";

    const auto path = runtime.saveFailedAudio("RIFF-bytes");
    ASSERT_TRUE(path.has_value());
    EXPECT_EQ(path->parent_path(), dir / "failed");
    EXPECT_TRUE(path->filename().string().starts_with("dictation-"));
    EXPECT_EQ(path->filename().string().find(':'), std::string::npos);
    EXPECT_EQ(path->extension(), ".wav");
    EXPECT_EQ(testing::readFile(*path), "RIFF-bytes");
}

TEST_F(WeftRuntimeTest, KeysComeFromTheEnvironmentBeforeTheKeyring) {
    auto secrets = std::make_shared<MemorySecretStore>();
    secrets->store("GROQ_API_KEY", "from-keyring");
    secrets->store("FIREWORKS_API_KEY", "fw");
    setenv("GROQ_API_KEY", "from-env", 1);
    WeftRuntime runtime(dir.path(), true, secrets);
    EXPECT_EQ(runtime.keys().at(Provider::groq), "from-env");
    EXPECT_EQ(runtime.keyStatusDescription(),
              "fireworks: \u2713  deepinfra: \u2013  groq: \u2713  openai: \u2013");
    EXPECT_TRUE(runtime.hasCloudSTT());

    secrets->store("OPENAI_API_KEY", "oa");
    runtime.refreshKeys();
    EXPECT_EQ(runtime.polishers().size(), 2u);
    EXPECT_EQ(runtime.transcriptionRouter()->backends().size(), 3u);

    writeSettings({{"sttProvider", "local"}});
    runtime.reload();
    EXPECT_FALSE(runtime.hasCloudSTT()) << "a local provider without a relay is not cloud";
}

}  // namespace
}  // namespace tevra
