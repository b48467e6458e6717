#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <utility>

#include "update/appcast.h"

namespace tevra {

// What the feed means for the running version: a release to offer, a refusal
// with its reason, or nothing to do.
struct UpdateDecision {
    enum class Kind { updateAvailable, rejected, upToDate };

    Kind kind = Kind::upToDate;
    std::optional<Appcast> appcast;  // updateAvailable only
    std::string reason;              // rejected only

    static UpdateDecision updateAvailable(Appcast appcast) {
        return {Kind::updateAvailable, std::move(appcast), {}};
    }
    static UpdateDecision rejected(std::string reason) {
        return {Kind::rejected, std::nullopt, std::move(reason)};
    }
    static UpdateDecision upToDate() { return {}; }

    bool operator==(const UpdateDecision&) const = default;

    // "up to date", "update available: 1.2.0 https://…", "rejected: REASON"
    std::string describe() const {
        switch (kind) {
            case Kind::updateAvailable:
                return "update available: " + appcast->version + " " + appcast->url;
            case Kind::rejected:
                return "rejected: " + reason;
            case Kind::upToDate:
                break;
        }
        return "up to date";
    }
};

inline std::ostream& operator<<(std::ostream& out, const UpdateDecision& decision) {
    return out << decision.describe();
}

}  // namespace tevra
