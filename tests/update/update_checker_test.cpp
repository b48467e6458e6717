// The update decision as a pure function of the feed's bytes: its decoding,
// the signature before anything else, then the download address, the system
// and the version.
#include "update/update_checker.h"

#include <gtest/gtest.h>

#include "signed_feed.h"

namespace tevra {
namespace {

using Kind = UpdateDecision::Kind;
using nlohmann::json;
using testing::FeedKey;

const OSVersion kOS{6, 1, 0};
constexpr const char* kURL = "https://dl.example.org/tevra-2.0.0.tar.gz";

json with(json feed, const char* key, json value) {
    feed[key] = std::move(value);
    return feed;
}

TEST(UpdateCheckerTest, EvaluateDecidesInOrder) {
    const FeedKey key;
    const std::string current = "1.9.0";
    struct Case {
        std::string name;
        std::string feed;
        std::optional<std::string> host;
        UpdateDecision expected;
    };
    const json good = key.feed("2.0.0", kURL, {{"notes", "Faster."}, {"extra", {1, 2}}});
    const auto available = [](const json& feed) {
        return UpdateDecision::updateAvailable(*Appcast::decode(feed.dump()));
    };
    const auto rejected = [](const std::string& reason) {
        return UpdateDecision::rejected(reason);
    };
    const std::vector<Case> cases = {
        {"a newer signed release, unknown keys passed over", good.dump(), std::nullopt,
         available(good)},
        {"the same version", key.feed("1.9.0", kURL).dump(), std::nullopt,
         UpdateDecision::upToDate()},
        {"an older version", key.feed("1.8.9", kURL).dump(), std::nullopt,
         UpdateDecision::upToDate()},
        {"1.10 is newer than 1.9", key.feed("1.10", kURL).dump(), std::nullopt,
         available(key.feed("1.10", kURL))},
        {"not JSON", "{\"version\":", std::nullopt, rejected(UpdateChecker::kUnparseable)},
        {"not an object", "[1]", std::nullopt, rejected(UpdateChecker::kUnparseable)},
        {"no signature", json{{"version", "2.0.0"}, {"url", kURL}}.dump(), std::nullopt,
         rejected(UpdateChecker::kUnparseable)},
        {"a version of the wrong type", with(good, "version", 2).dump(), std::nullopt,
         rejected(UpdateChecker::kUnparseable)},
        {"notes of the wrong type", with(good, "notes", true).dump(), std::nullopt,
         rejected(UpdateChecker::kUnparseable)},
        {"a signed http download", key.feed("2.0.0", "http://dl.example.org/x").dump(),
         std::nullopt, rejected(UpdateChecker::kDownloadNotHttps)},
        {"a signed download without a scheme", key.feed("2.0.0", "dl.example.org/x").dump(),
         std::nullopt, rejected(UpdateChecker::kDownloadNotHttps)},
        {"host case and port play no part",
         key.feed("2.0.0", "HTTPS://DL.example.org:8443/x").dump(), "dl.EXAMPLE.org",
         available(key.feed("2.0.0", "HTTPS://DL.example.org:8443/x"))},
        {"another download host", good.dump(), "updates.example.org",
         rejected(UpdateChecker::kHostMismatch)},
        {"a newer system needed",
         key.feed("2.0.0", kURL, {{"minimumSystemVersion", "6.1.1"}}).dump(), std::nullopt,
         rejected("requires a newer Linux kernel (6.1.1)")},
        {"an unreadable minimum counts as 0.0.0",
         key.feed("2.0.0", kURL, {{"minimumSystemVersion", "abc"}}).dump(), std::nullopt,
         available(key.feed("2.0.0", kURL, {{"minimumSystemVersion", "abc"}}))},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(UpdateChecker::evaluate(c.feed, current, kOS, c.host, key.publicBase64()),
                  c.expected)
            << c.name;
    }
    const std::string feed = key.feed("0.0.1", kURL).dump();
    EXPECT_EQ(UpdateChecker::evaluate(feed, "0.0.0", kOS, {}, key.publicBase64()).kind,
              Kind::updateAvailable)
        << "without a version of its own, anything above 0.0.0 is offered";
}

// Every tampered record is refused for its signature, although each would
// also fail the later tests: an http download, another host, a newer system.
TEST(UpdateCheckerTest, TamperingIsRefusedBeforeAnyOtherTest) {
    const FeedKey key;
    const FeedKey otherKey;
    const std::string url = "http://evil.example/tevra.tar.gz";
    const json base = key.feed("2.0.0", url, {{"minimumSystemVersion", "99"}});
    const auto evaluate = [&](const json& feed, const std::string& publicKey) {
        return UpdateChecker::evaluate(feed.dump(), "1.0.0", kOS, "dl.example.org", publicKey);
    };
    ASSERT_EQ(evaluate(base, key.publicBase64()),
              UpdateDecision::rejected(UpdateChecker::kDownloadNotHttps))
        << "the untouched record passes the signature";

    const std::string signature =
        key.signatureBytes(base["version"].get<std::string>() + "\n" + url);
    auto changed = [](std::string text, std::size_t at) {
        text[at] = text[at] == 'A' ? 'B' : 'A';
        return text;
    };
    struct Case {
        std::string name;
        json feed;
        std::string publicKey;
    };
    const std::vector<Case> cases = {
        {"one byte of version", with(base, "version", "2.0.1"), key.publicBase64()},
        {"one byte of url", with(base, "url", "http://evil.example/tevra.tar.gy"),
         key.publicBase64()},
        {"one byte of the signature",
         with(base, "signature", changed(base["signature"].get<std::string>(), 10)),
         key.publicBase64()},
        {"one byte of the key", base, changed(key.publicBase64(), 5)},
        {"a signature of 63 bytes",
         with(base, "signature", testing::toBase64(signature.substr(0, 63))), key.publicBase64()},
        {"a signature of 65 bytes", with(base, "signature", testing::toBase64(signature + "x")),
         key.publicBase64()},
        {"a good signature over another record",
         with(base, "signature", key.feed("9.9.9", url)["signature"]), key.publicBase64()},
        {"another key", base, otherKey.publicBase64()},
        {"a key of 31 bytes", base, testing::toBase64(key.publicKey.substr(0, 31))},
        {"no base64", with(base, "signature", "not base64!"), "%%%"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(evaluate(c.feed, c.publicKey), UpdateDecision::rejected(UpdateChecker::kTampered))
            << c.name;
    }

    // The unsigned fields are open by design.
    const json good = key.feed("2.0.0", kURL, {{"notes", "a"}, {"minimumSystemVersion", "6"}});
    for (const json& unsigned_ :
         {with(good, "notes", "changed"), with(good, "minimumSystemVersion", "5.4")}) {
        EXPECT_EQ(
            UpdateChecker::evaluate(unsigned_.dump(), "1.0.0", kOS, {}, key.publicBase64()).kind,
            Kind::updateAvailable)
            << unsigned_;
    }
}

TEST(UpdateCheckerTest, VersionsCompareNumberByNumber) {
    const std::vector<std::tuple<std::string, std::string, int>> cases = {
        {"1.10", "1.9", 1},
        {"1.2", "1.2.0", 0},
        {"1.2.x", "1.2.0", 0},
        {"1.2.3-beta", "1.2", 0},
        {"2", "10", -1},
        {"+3", "3", 0},
        {"-1", "0", -1},
        {"1..2", "1.2", 0},
        {"", "0.0", 0},
        {"1.2.3.1", "1.2.3", 1},
        {"99999999999999999999", "0", 0},
    };
    for (const auto& [a, b, expected] : cases) {
        EXPECT_EQ(UpdateChecker::compareVersions(a, b), expected) << a << " vs " << b;
        EXPECT_EQ(UpdateChecker::compareVersions(b, a), -expected) << b << " vs " << a;
    }
    const std::vector<std::pair<std::string, bool>> minimums = {
        {"6.1", true}, {"6.1.0", true}, {"6.1.1", false}, {"5.99", true},    {"6.2", false},
        {"7", false},  {"", true},      {"abc", true},    {"6.1.0.9", true},
    };
    for (const auto& [minimum, meets] : minimums) {
        EXPECT_EQ(UpdateChecker::osMeets(kOS, minimum), meets) << minimum;
    }
    EXPECT_EQ(OSVersion::fromRelease("6.1.0-18-amd64"), (OSVersion{6, 1, 0}));
    EXPECT_EQ(OSVersion::fromRelease("5.15.153.1-microsoft-standard-WSL2"),
              (OSVersion{5, 15, 153}));
    EXPECT_EQ(OSVersion::fromRelease("6.8"), (OSVersion{6, 8, 0}));
    EXPECT_EQ(OSVersion::fromRelease("unknown"), (OSVersion{0, 0, 0}));
}

}  // namespace
}  // namespace tevra
