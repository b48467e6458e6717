// tevractl update: the update check by hand. `check` asks the feed exactly as
// Tevra does at start; `verify` judges a feed file before it is published.
#include <iostream>

#include "base/os_version.h"
#include "core/weft_runtime.h"
#include "tevractl/commands.h"
#include "tevractl/options.h"
#include "update/update_checker.h"

namespace tevra::ctl {
namespace {

int print(const UpdateDecision& decision, std::ostream& out) {
    out << decision.describe() << "\n";
    return decision.kind == UpdateDecision::Kind::rejected ? 1 : 0;
}

int check(WeftRuntime& runtime, const Parsed& p, std::ostream& out) {
    if (!p.positional.empty()) {
        throw UsageError{"unexpected argument " + p.positional[0]};
    }
    const auto feed = p.values.find("--feed");
    return print(
        UpdateChecker::check(feed == p.values.end() ? runtime.settings().appcastURL : feed->second,
                             WeftCoreInfo::version),
        out);
}

int verify(const Parsed& p, std::ostream& out, std::ostream& err) {
    if (p.positional.size() != 1) {
        throw UsageError{p.positional.empty() ? "which feed file?"
                                              : "unexpected argument " + p.positional[1]};
    }
    const auto bytes = readFile(p.positional[0]);
    if (!bytes) {
        err << "tevractl update verify: cannot read " << p.positional[0] << "\n";
        return 2;
    }
    const auto key = p.values.find("--public-key");
    const auto version = p.values.find("--current-version");
    return print(UpdateChecker::evaluate(
                     *bytes, version == p.values.end() ? WeftCoreInfo::version : version->second,
                     OSVersion::running(), std::nullopt,
                     key == p.values.end() ? UpdateChecker::publicKeyBase64 : key->second),
                 out);
}

}  // namespace

int update(WeftRuntime& runtime, const Args& args, std::ostream& out, std::ostream& err) {
    if (args.empty()) {
        out << helpFor("update");
        return 2;
    }
    const std::string& sub = args[0];
    const Args rest(args.begin() + 1, args.end());
    try {
        if (sub == "check") {
            return check(runtime, parse(rest, {"--feed"}, {}), out);
        }
        if (sub == "verify") {
            return verify(parse(rest, {"--public-key", "--current-version"}, {}), out, err);
        }
        throw UsageError{"unknown update command \"" + sub + "\""};
    } catch (const UsageError& e) {
        return usage("update", e.message, err);
    }
}

}  // namespace tevra::ctl
