// The crash reporter's two halves: a child process that really crashes with
// the reporter installed, and the next start that collects and sends its report.
#include "crash/crash_reporter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>

#include "base/iso8601.h"
#include "base/os_version.h"
#include "support/loopback_server.h"
#include "support/scoped_env.h"
#include "support/subprocess.h"
#include "support/temp_dir.h"
#include "support/test_tls.h"

namespace tevra {
namespace {

namespace fs = std::filesystem;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::modeOf;
using ::testing::Not;
using testing::readFile;
using testing::TempDir;

// Crashes the helper program. A sanitizer build keeps its own hands off the
// signals there, so that the reporter's handler is the one that runs.
testing::ProcessResult crashChild(const fs::path& dir, const std::string& how) {
    return testing::runProcess(
        {TEVRA_CRASH_CHILD, dir.string(), how},
        {{"ASAN_OPTIONS",
          "handle_segv=0:handle_sigbus=0:handle_abort=0:handle_sigill=0:handle_sigfpe=0:"
          "detect_leaks=0"}});
}

nlohmann::json pendingReport(const fs::path& dir) {
    return nlohmann::json::parse(readFile(CrashReporter::pendingURL(dir)), nullptr, false);
}

TEST(CrashReporterTest, ASignalLeavesItsStackAndTheNextStartMakesAScrubbedReport) {
    TempDir data;
    const auto crashed = crashChild(data.path(), "segv");
    EXPECT_EQ(crashed.exitCode, -1) << "the child died of its signal: " << crashed.err;
    const fs::path signalFile = CrashReporter::signalURL(data.path());
    const std::string stack = readFile(signalFile);
    EXPECT_THAT(stack, HasSubstr("tevra_crash_child("));
    EXPECT_EQ(modeOf(signalFile), 0600u);
    EXPECT_EQ(modeOf(data / "crash"), 0700u);
    EXPECT_FALSE(CrashReporter::hasPending(data.path()));

    // The helper lives in the build tree: as the home directory, its path is scrubbed.
    const fs::path home = fs::path(TEVRA_CRASH_CHILD).parent_path();
    testing::ScopedEnv env({{"HOME", home.string()}});
    CrashReporter::collectPending(data.path(), "1.4.0");
    EXPECT_FALSE(fs::exists(signalFile));
    const auto report = pendingReport(data.path());
    EXPECT_EQ(report["appVersion"], "1.4.0");
    EXPECT_EQ(report["osVersion"], OSVersion::running().dotted());
    EXPECT_EQ(report["kind"], "signal");
    EXPECT_TRUE(parseISO8601(report["when"].get<std::string>()));
    const auto frames = report["frames"].get<std::vector<std::string>>();
    EXPECT_THAT(frames, Contains(HasSubstr("~/tevra_crash_child(")));
    EXPECT_THAT(frames, Each(Not(HasSubstr(home.string()))));
    EXPECT_EQ(modeOf(CrashReporter::pendingURL(data.path())), 0600u);

    // An empty signal file is a report without frames; no file, nothing at all.
    std::ofstream(signalFile).close();
    CrashReporter::collectPending(data.path(), "1.4.0");
    EXPECT_THAT(pendingReport(data.path())["frames"], IsEmpty());
    CrashReporter::discardPending(data.path());
    CrashReporter::collectPending(data.path(), "1.4.0");
    EXPECT_FALSE(CrashReporter::hasPending(data.path()));
}

TEST(CrashReporterTest, AnUncaughtExceptionWritesItsReportAtOnce) {
    TempDir data;
    const auto crashed = crashChild(data.path(), "exception");
    EXPECT_EQ(crashed.exitCode, -1) << crashed.err;
    const auto report = pendingReport(data.path());
    EXPECT_EQ(report["kind"], "exception:tevra::testing::CrashProbeError");
    EXPECT_EQ(report["appVersion"], "9.9.9");
    EXPECT_THAT(report["frames"].get<std::vector<std::string>>(),
                Contains(HasSubstr("tevra_crash_child(")));
    EXPECT_EQ(modeOf(CrashReporter::pendingURL(data.path())), 0600u);
    // The abort that follows is a signal of its own.
    EXPECT_TRUE(fs::exists(CrashReporter::signalURL(data.path())));
}

TEST(CrashReporterTest, ScrubTakesTheHomeDirectoryOutOfEveryFrame) {
    const std::vector<std::string> frames = {"/home/ada/bin/tevra(+0x1c) [0x55]",
                                             "/Users/ada/lib/x.so(f+0x2) [0x7f]",
                                             "/usr/lib/libc.so.6(+0x3) [0x7f]"};
    const std::vector<std::string> scrubbed = {
        "~/bin/tevra(+0x1c) [0x55]", "~/lib/x.so(f+0x2) [0x7f]", "/usr/lib/libc.so.6(+0x3) [0x7f]"};
    EXPECT_EQ(CrashReport::scrub(frames, "/home/ada"), scrubbed);
    EXPECT_EQ(CrashReport::scrub(frames, "/srv/homes/ada/"), scrubbed)
        << "the user's name, wherever the home directory is";
    EXPECT_EQ(CrashReport::scrub({"/srv/homes/ada/x"}, "/srv/homes/ada"),
              std::vector<std::string>{"~/x"});
}

class CrashFlushTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (auto* server : {&https, &http}) {
            server->server().Post(
                "/api/crash", [this](const httplib::Request& req, httplib::Response& res) {
                    std::lock_guard lock(mutex);
                    received.push_back(req.get_header_value("Content-Type") + " " + req.body);
                    res.status = status;
                });
            server->start();
        }
        limits.trustedCAFile = testing::TestTLS::shared().caFile.string();
    }
    void TearDown() override {
        https.stop();
        http.stop();
    }

    testing::LoopbackServer https{testing::TestTLS::shared()};
    testing::LoopbackServer http;
    HttpLimits limits = CrashReporter::httpLimits();
    std::mutex mutex;
    std::vector<std::string> received;
    int status = 200;
};

TEST_F(CrashFlushTest, AReportGoesOutOnlyWithConsentAndOverHttpsAndGoesAfterAnyAnswer) {
    TempDir data;
    const CrashReport report{"1.0.0", "6.1.0", "2026-11-22T22:06:37Z", "signal", {"a", "b"}};
    const std::string endpoint = https.baseURL() + "/api/crash";
    const HttpClient client(limits);
    struct Case {
        std::string name;
        bool enabled;
        std::optional<std::string> endpoint;
        int status;
        bool delivered;
    };
    const std::vector<Case> cases = {
        {"consent off", false, endpoint, 200, false},
        {"no endpoint", true, std::nullopt, 200, false},
        {"an http endpoint", true, http.baseURL() + "/api/crash", 200, false},
        {"no server", true,
         "https://127.0.0.1:" + std::to_string(testing::LoopbackServer::closedPort()), 200, false},
        {"a server error", true, endpoint, 500, true},
        {"accepted", true, endpoint, 200, true},
    };
    for (const Case& c : cases) {
        CrashReporter::store(data.path(), report);
        received.clear();
        status = c.status;
        EXPECT_EQ(CrashReporter::flushPending(data.path(), c.enabled, c.endpoint, client),
                  c.delivered)
            << c.name;
        EXPECT_EQ(CrashReporter::hasPending(data.path()), !c.delivered) << c.name;
        std::lock_guard lock(mutex);
        if (c.delivered) {
            EXPECT_THAT(received, ElementsAre("application/json " + report.toJSON())) << c.name;
        } else {
            EXPECT_THAT(received, IsEmpty()) << c.name;
        }
    }
    EXPECT_FALSE(CrashReporter::flushPending(data.path(), true, endpoint, client))
        << "nothing pending, nothing sent";
}

}  // namespace
}  // namespace tevra
