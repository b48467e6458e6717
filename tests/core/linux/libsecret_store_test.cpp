#include "core/linux/libsecret_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "core/credentials.h"
#include "core/keychain.h"
#include "support/temp_dir.h"

// These tests talk to a real Secret Service on the session bus: `make test`
// runs them inside scripts/test-env (a private bus and an unlocked keyring).
// Other tools (secret-tool, dbus-send) look at the keyring from outside.

namespace tevra {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

// Standard output of a shell command, or nullopt when it exits non-zero.
std::optional<std::string> shell(const std::string& command) {
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) {
        return std::nullopt;
    }
    std::string output;
    char buffer[4096];
    for (std::size_t n; (n = ::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.append(buffer, n);
    }
    const int status = ::pclose(pipe);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? std::optional(output) : std::nullopt;
}

std::string attributes(const std::string& service, const std::string& account) {
    return " service " + service + " account " + account;
}

// printf turns the escapes of `bytes` into the exact bytes that secret-tool stores.
bool secretToolStore(const std::string& service, const std::string& account,
                     const std::string& bytes) {
    return shell("printf '" + bytes + "' | secret-tool store --label=test" +
                 attributes(service, account))
        .has_value();
}

std::optional<std::string> secretToolLookup(const std::string& service,
                                            const std::string& account) {
    return shell("secret-tool lookup" + attributes(service, account));
}

// The matching items' paths within their collection ("/3"), as secret-tool lists them.
std::vector<std::string> itemPaths(const std::string& service, const std::string& account) {
    std::istringstream lines(
        shell("secret-tool search --all" + attributes(service, account)).value_or(""));
    std::vector<std::string> paths;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("[/")) {
            paths.push_back(line.substr(1, line.size() - 2));
        }
    }
    return paths;
}

// Each test works under a service of its own, so tests can run in parallel
// against one keyring.
class SecretServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        const bool works = store_.store("probe", "probe") && store_.lookup("probe") == "probe";
        store_.erase("probe");
        if (!works) {
            const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
            FAIL() << "No working Secret Service on the session bus (DBUS_SESSION_BUS_ADDRESS="
                   << (bus ? bus : "unset")
                   << "). Run the tests through scripts/test-env, as `make test` does.";
        }
    }
    void TearDown() override {
        for (Provider p : allCases<Provider>()) {
            store_.erase(rawValue(p));
        }
        store_.erase(Credentials::proxyTokenAccount);
    }

    const std::string service_ = "com.kestrum.tevra.test." + std::to_string(::getpid()) + "." +
                                 ::testing::UnitTest::GetInstance()->current_test_info()->name();
    LibsecretStore store_{service_};
};

TEST_F(SecretServiceTest, KeysRoundTripTrimmedIntoTheDefaultCollection) {
    EXPECT_EQ(Keychain::read(store_, "GROQ_API_KEY"), std::nullopt);
    EXPECT_TRUE(Keychain::write(store_, "GROQ_API_KEY", "  gsk_live_ÄÖ\t\r\n"));
    EXPECT_EQ(Keychain::read(store_, "GROQ_API_KEY"), "gsk_live_ÄÖ");
    EXPECT_EQ(secretToolLookup(service_, "GROQ_API_KEY"), "gsk_live_ÄÖ");
    EXPECT_EQ(Keychain::read(store_, "OPENAI_API_KEY"), std::nullopt);

    const auto paths = itemPaths(service_, "GROQ_API_KEY");
    ASSERT_THAT(paths, SizeIs(1));
    EXPECT_THAT(shell("dbus-send --session --print-reply --dest=org.freedesktop.secrets "
                      "/org/freedesktop/secrets/aliases/default "
                      "org.freedesktop.DBus.Properties.Get "
                      "string:org.freedesktop.Secret.Collection string:Items"),
                ::testing::Optional(HasSubstr(paths[0] + "\"")));
}

TEST_F(SecretServiceTest, ValuesStoredByOtherToolsAreTrimmedOrRejected) {
    ASSERT_TRUE(secretToolStore(service_, "GROQ_API_KEY", "  gsk_spaced \\n\\n"));
    ASSERT_TRUE(secretToolStore(service_, "OPENAI_API_KEY", " \\t \\n"));
    ASSERT_TRUE(secretToolStore(service_, "DEEPINFRA_API_KEY", "key\\377\\376"));
    EXPECT_EQ(Keychain::read(store_, "GROQ_API_KEY"), "gsk_spaced");
    EXPECT_EQ(Keychain::read(store_, "OPENAI_API_KEY"), std::nullopt);
    EXPECT_EQ(store_.lookup("DEEPINFRA_API_KEY"), "key\xff\xfe");
    EXPECT_EQ(Keychain::read(store_, "DEEPINFRA_API_KEY"), std::nullopt);
}

TEST_F(SecretServiceTest, WritingAgainUpdatesTheSameItemInPlace) {
    ASSERT_TRUE(Keychain::write(store_, "GROQ_API_KEY", "first"));
    const auto before = itemPaths(service_, "GROQ_API_KEY");
    ASSERT_TRUE(Keychain::write(store_, "GROQ_API_KEY", "second"));
    EXPECT_THAT(before, SizeIs(1));
    EXPECT_EQ(itemPaths(service_, "GROQ_API_KEY"), before);
    EXPECT_EQ(Keychain::read(store_, "GROQ_API_KEY"), "second");

    // An item another tool made lacks the schema name that Tevra's own items
    // carry; it is updated too, not shadowed by a second item.
    ASSERT_TRUE(secretToolStore(service_, "OPENAI_API_KEY", "by-hand"));
    const auto handMade = itemPaths(service_, "OPENAI_API_KEY");
    ASSERT_TRUE(Keychain::write(store_, "OPENAI_API_KEY", "by-tevra"));
    EXPECT_EQ(itemPaths(service_, "OPENAI_API_KEY"), handMade);
    EXPECT_EQ(secretToolLookup(service_, "OPENAI_API_KEY"), "by-tevra");
}

TEST_F(SecretServiceTest, BlankWritesAndDeletesRemoveItemsAndSucceedWhenNoneExists) {
    ASSERT_TRUE(Keychain::write(store_, "GROQ_API_KEY", "value"));
    EXPECT_TRUE(Keychain::write(store_, "GROQ_API_KEY", " \n "));
    EXPECT_THAT(itemPaths(service_, "GROQ_API_KEY"), SizeIs(0));
    EXPECT_TRUE(Keychain::write(store_, "GROQ_API_KEY", ""));
    EXPECT_TRUE(Keychain::remove(store_, "GROQ_API_KEY"));

    ASSERT_TRUE(Keychain::write(store_, "GROQ_API_KEY", "value"));
    EXPECT_TRUE(Keychain::remove(store_, "GROQ_API_KEY"));
    EXPECT_EQ(store_.lookup("GROQ_API_KEY"), std::nullopt);
}

TEST_F(SecretServiceTest, CredentialsPreferTheEnvironmentOverTheKeyring) {
    ASSERT_TRUE(Credentials::save(Provider::groq, "groq-keyring", store_));
    ASSERT_TRUE(Credentials::save(Provider::fireworks, " fw-keyring\n", store_));
    ASSERT_TRUE(Keychain::write(store_, Credentials::proxyTokenAccount, "relay-token"));
    const Credentials::Environment env = [](std::string_view name) -> std::optional<std::string> {
        return name == "GROQ_API_KEY" ? std::optional<std::string>("groq-env") : std::nullopt;
    };
    EXPECT_EQ(
        Credentials::fetch(store_, 6.0, env),
        (Credentials::Keys{{Provider::groq, "groq-env"}, {Provider::fireworks, "fw-keyring"}}));
    EXPECT_EQ(Credentials::proxyToken(store_, env), "relay-token");
    EXPECT_EQ(Credentials::source(Provider::groq, store_, env), Credentials::Source::environment);
    EXPECT_EQ(Credentials::source(Provider::fireworks, store_, env), Credentials::Source::keychain);
    EXPECT_EQ(Credentials::source(Provider::openai, store_, env), Credentials::Source::none);
}

// The product's own service, with an item stored the way the README tells users to.
TEST_F(SecretServiceTest, AKeyStoredWithTheReadmeCommandIsFound) {
    const std::string account = "TEVRA_TEST_" + std::to_string(::getpid());
    LibsecretStore product;
    ASSERT_TRUE(secretToolStore("com.kestrum.tevra", account, "gsk_from_readme"));
    EXPECT_EQ(Keychain::read(product, account), "gsk_from_readme");
    EXPECT_TRUE(Keychain::write(product, account, ""));
    EXPECT_EQ(secretToolLookup("com.kestrum.tevra", account), std::nullopt);
}

// The probe is a process of its own, so that it connects to the session bus
// its environment names rather than one this process already holds.
std::string runProbe(const std::string& environment) {
    return shell("env " + environment + " " TEVRA_SECRET_STORE_PROBE " 2>&1").value_or("failed");
}

constexpr const char* emptyAndRefusing = "read=none write=false delete=false\n";

// Guards the cases below: with a keyring at hand the probe reads, writes and deletes.
TEST_F(SecretServiceTest, TheProbeWorksWithAKeyring) {
    EXPECT_EQ(runProbe(""), "read=none write=true delete=true\n");
}

TEST(SecretServiceMissing, NoSessionBusAtAll) {
    testing::TempDir runtime;  // no "bus" socket in it either
    EXPECT_EQ(runProbe("-u DBUS_SESSION_BUS_ADDRESS -u DISPLAY XDG_RUNTIME_DIR=" +
                       runtime.path().string()),
              emptyAndRefusing);
}

TEST(SecretServiceMissing, ABusAddressWithNothingBehindIt) {
    testing::TempDir tmp;
    EXPECT_EQ(runProbe("DBUS_SESSION_BUS_ADDRESS=unix:path=" + (tmp / "gone").string()),
              emptyAndRefusing);
}

// A bus with no service directories: nothing owns or can start
// org.freedesktop.secrets, as on a session without a keyring daemon.
TEST(SecretServiceMissing, ABusWithoutAKeyringDaemon) {
    testing::TempDir tmp;
    std::ofstream(tmp / "bus.conf")
        << "<busconfig><type>session</type><listen>unix:path=" << (tmp / "bus").string()
        << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
           "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/>"
           "</policy></busconfig>\n";
    std::istringstream out(shell("dbus-daemon --fork --print-address=1 --print-pid=1 "
                                 "--config-file=" +
                                 (tmp / "bus.conf").string())
                               .value_or(""));
    std::string address, pid;
    std::getline(out, address);
    std::getline(out, pid);
    ASSERT_THAT(address, StartsWith("unix:path=")) << "dbus-daemon did not start";

    EXPECT_EQ(runProbe("DBUS_SESSION_BUS_ADDRESS='" + address + "'"), emptyAndRefusing);
    ::kill(std::stoi(pid), SIGTERM);
}

}  // namespace
}  // namespace tevra
