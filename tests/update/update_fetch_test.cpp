// The check over the wire: a loopback https server with a certificate of the
// tests' own authority, which only the test's client trusts.
#include <gtest/gtest.h>

#include <atomic>

#include "signed_feed.h"
#include "support/loopback_server.h"
#include "support/test_tls.h"
#include "update/update_checker.h"

namespace tevra {
namespace {

using Kind = UpdateDecision::Kind;

class UpdateFetchTest : public ::testing::Test {
protected:
    void SetUp() override {
        server.server().Get("/appcast.json",
                            [this](const httplib::Request&, httplib::Response& res) {
                                ++requests;
                                if (stallMs > 0) {
                                    server.stall(std::chrono::milliseconds(stallMs));
                                }
                                res.status = status;
                                res.set_content(body, "application/json");
                            });
        server.start();
        limits.trustedCAFile = testing::TestTLS::shared().caFile.string();
    }
    // A stalled handler ends before the fields it reads.
    void TearDown() override { server.stop(); }

    UpdateDecision check(const std::string& feed) {
        const HttpClient http(limits);
        return UpdateChecker::check(http, feed, "1.0.0", {6, 1, 0}, key.publicBase64());
    }

    // A signed feed whose notes pad it to exactly size bytes.
    std::string feedOfSize(std::size_t size) const {
        nlohmann::json feed = key.feed("2.0.0", "https://127.0.0.1/tevra.tar.gz", {{"notes", ""}});
        const std::size_t bare = feed.dump().size();
        feed["notes"] = std::string(size - bare, 'n');
        return feed.dump();
    }

    testing::FeedKey key;
    testing::LoopbackServer server{testing::TestTLS::shared()};
    HttpLimits limits = UpdateChecker::httpLimits();
    std::atomic<int> requests{0};
    int status = 200;
    int stallMs = 0;
    std::string body;
};

TEST_F(UpdateFetchTest, OnlyAWholeHttpsAnswerOfStatus200IsJudged) {
    const std::string feed = server.baseURL() + "/appcast.json";
    struct Case {
        std::string name;
        int status;
        std::string body;
        UpdateDecision::Kind kind;
        std::string reason;
    };
    const std::vector<Case> cases = {
        {"a good feed", 200, feedOfSize(1000), Kind::updateAvailable, ""},
        {"a feed of exactly the limit", 200, feedOfSize(UpdateChecker::maxAppcastBytes),
         Kind::updateAvailable, ""},
        {"one byte more", 200, feedOfSize(UpdateChecker::maxAppcastBytes + 1), Kind::rejected,
         UpdateChecker::kTooLarge},
        {"not found", 404, feedOfSize(1000), Kind::rejected, UpdateChecker::kFetchFailed},
        {"a download from another host", 200,
         key.feed("2.0.0", "https://elsewhere.example/tevra.tar.gz").dump(), Kind::rejected,
         UpdateChecker::kHostMismatch},
    };
    for (const Case& c : cases) {
        status = c.status;
        body = c.body;
        const UpdateDecision decision = check(feed);
        EXPECT_EQ(decision.kind, c.kind) << c.name << ": " << decision;
        EXPECT_EQ(decision.reason, c.reason) << c.name;
    }
    status = 200;
    body = feedOfSize(1000);
    EXPECT_EQ(check("HTTPS" + feed.substr(5)).kind, Kind::updateAvailable)
        << "the scheme's case plays no part";

    const int before = requests;
    const std::string plain = "http" + feed.substr(5);
    EXPECT_EQ(check(plain), UpdateDecision::rejected(UpdateChecker::kFeedNotHttps));
    EXPECT_EQ(requests, before) << "an http feed is never asked";
}

TEST_F(UpdateFetchTest, AFeedSlowerThanTenSecondsIsGivenUp) {
    stallMs = 12000;
    body = feedOfSize(1000);
    EXPECT_EQ(check(server.baseURL() + "/appcast.json"),
              UpdateDecision::rejected(UpdateChecker::kFetchFailed));
}

}  // namespace
}  // namespace tevra
