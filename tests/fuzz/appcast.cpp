// The update feed as any server, or anyone between it and us, may send it.
// The decoder takes a whole record or nothing, evaluate() always decides with
// one of its texts, and the version arithmetic it leans on stays consistent.
#include "update/appcast.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "base/url.h"
#include "fuzz_check.h"
#include "update/update_checker.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace tevra;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const OSVersion os{6, 1, 0};

    const UpdateDecision decision = UpdateChecker::evaluate(text, "1.0.0", os, "example.org");
    static const std::set<std::string> reasons = {
        UpdateChecker::kUnparseable, UpdateChecker::kTampered, UpdateChecker::kDownloadNotHttps,
        UpdateChecker::kHostMismatch};
    FUZZ_CHECK(decision.kind == UpdateDecision::Kind::rejected);  // nobody here has the key
    FUZZ_CHECK(reasons.contains(decision.reason));

    const auto appcast = Appcast::decode(text);
    FUZZ_CHECK(appcast.has_value() == (decision.reason != UpdateChecker::kUnparseable));
    if (!appcast) {
        return 0;
    }
    // What decodes re-encodes to the same record.
    nlohmann::json again = {
        {"version", appcast->version}, {"url", appcast->url}, {"signature", appcast->signature}};
    if (appcast->notes) {
        again["notes"] = *appcast->notes;
    }
    if (appcast->minimumSystemVersion) {
        again["minimumSystemVersion"] = *appcast->minimumSystemVersion;
    }
    FUZZ_CHECK(Appcast::decode(again.dump()) == appcast);

    // The checks behind the signature, on the record's own strings.
    for (const std::string& other : {std::string("1.2.0"), appcast->url}) {
        const int forward = UpdateChecker::compareVersions(appcast->version, other);
        FUZZ_CHECK(forward == -UpdateChecker::compareVersions(other, appcast->version));
    }
    FUZZ_CHECK(UpdateChecker::compareVersions(appcast->version, appcast->version) == 0);
    UpdateChecker::osMeets(os, appcast->minimumSystemVersion.value_or(appcast->version));
    if (const auto url = parseURL(appcast->url)) {
        FUZZ_CHECK(!url->scheme.empty());
    }
    return 0;
}
