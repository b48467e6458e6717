#include "core/weft_runtime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "store/history_store.h"
#include "store/raw_database.h"
#include "support/loopback_server.h"
#include "support/memory_secret_store.h"
#include "support/scoped_env.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using testing::MemorySecretStore;

class WeftRuntimeTest : public ::testing::Test {
protected:
    void SetUp() override {
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

    testing::ScopedEnv env{{{"GROQ_API_KEY", std::nullopt},
                            {"OPENAI_API_KEY", std::nullopt},
                            {"DEEPINFRA_API_KEY", std::nullopt},
                            {"FIREWORKS_API_KEY", std::nullopt},
                            {"TEVRA_PROXY_TOKEN", std::nullopt}}};
    testing::TempDir dir;
    testing::LoopbackServer service;
};

TEST_F(WeftRuntimeTest, DictationWorksWhenTheDatabaseCannotBeOpened) {
    writeSettings({{"proxyBaseURL", service.baseURL() + "/v1"}, {"polishProvider", "rules"}});
    auto secrets = std::make_shared<MemorySecretStore>();
    secrets->store("TEVRA_PROXY_TOKEN", "tok");
    // A directory where the database file belongs: nothing to move aside.
    fs::create_directories(dir / "weft.sqlite/inside");
    WeftRuntime runtime(dir.path(), true, secrets);
    EXPECT_EQ(runtime.store(), nullptr);
    EXPECT_EQ(runtime.storeNotice(), "the history database could not be opened (cannot open " +
                                         (dir / "weft.sqlite").string() +
                                         "); going on without history");
    EXPECT_TRUE(fs::exists(dir / "weft.sqlite/inside"));
    const auto result = runtime.pipeline()->process(std::vector<int16_t>(16000, 2000), 16000, {});
    EXPECT_EQ(result.polished, "Kept without a store.");
    EXPECT_EQ(result.sttBackend, "kestrum");
}

// The files that a damaged database became, sorted.
std::vector<fs::path> movedAside(const fs::path& dir) {
    std::vector<fs::path> aside;
    for (const auto& entry : fs::directory_iterator(dir)) {
        if (entry.path().filename().string().starts_with("weft.sqlite.damaged-")) {
            aside.push_back(entry.path());
        }
    }
    std::sort(aside.begin(), aside.end());
    return aside;
}

TEST_F(WeftRuntimeTest, ADamagedDatabaseIsMovedAsideWithItsLogAndAFreshOneSeeded) {
    const std::string garbage(4096, 'x');
    std::ofstream(dir / "weft.sqlite") << garbage;
    std::ofstream(dir / "weft.sqlite-wal") << "its log";
    {
        WeftRuntime runtime(dir.path(), false, nullptr);
        ASSERT_NE(runtime.store(), nullptr);
        EXPECT_EQ(runtime.store()->modes().size(), 6u) << "the fresh database is seeded";
        const auto aside = movedAside(dir.path());
        ASSERT_EQ(aside.size(), 2u);
        EXPECT_THAT(aside[0].filename().string(),
                    ::testing::MatchesRegex("weft\\.sqlite\\.damaged-[0-9]{4}-[0-9]{2}-[0-9]{2}"
                                            "T[0-9]{2}-[0-9]{2}-[0-9]{2}Z"));
        EXPECT_EQ(testing::readFile(aside[0]), garbage);
        EXPECT_EQ(aside[1], aside[0].string() + "-wal");
        EXPECT_EQ(testing::readFile(aside[1]), "its log");
        EXPECT_EQ(runtime.storeNotice(),
                  "the history database was damaged (not a database); it was moved to " +
                      aside[0].string() + " and a fresh one started");
    }

    // A database whose tables cannot be brought up to date goes the same way.
    fs::remove_all(dir.path());
    fs::create_directories(dir.path());
    testing::RawDatabase((dir / "weft.sqlite").string())
        .exec(
            "CREATE TABLE history(id INTEGER PRIMARY KEY, note TEXT);"
            "INSERT INTO history(note) VALUES('kept')");
    WeftRuntime runtime(dir.path(), false, nullptr);
    ASSERT_NE(runtime.store(), nullptr);
    const auto aside = movedAside(dir.path());
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_EQ(testing::RawDatabase(aside[0].string()).value("SELECT note FROM history"), "kept");
    EXPECT_EQ(runtime.storeNotice(),
              "the history database was damaged (its tables could not be brought up to date: "
              "history.app is missing); it was moved to " +
                  aside[0].string() + " and a fresh one started");
    runtime.store()->add(HistoryRow{.ts = 1, .app = "new"});
    EXPECT_EQ(runtime.store()->recent(5).size(), 1u);
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
    env.set("GROQ_API_KEY", "from-env");
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

    // Without any keyring the environment still counts.
    env.set("TEVRA_PROXY_TOKEN", "relay");
    const WeftRuntime keyringless(dir.path(), true, nullptr);
    EXPECT_EQ(keyringless.keys(), (ProviderKeys{{Provider::groq, "from-env"}}));
    EXPECT_EQ(keyringless.proxyToken(), "relay");
}

}  // namespace
}  // namespace tevra
