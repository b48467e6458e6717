#pragma once

#include <string>

namespace tevra {

// Where the notetaker is: a call was reported and the grace runs (detected),
// capture runs (recording), capture ended and the session is being made
// (processing), or nothing goes on (idle).
struct NotetakerState {
    enum class Kind { detected, recording, idle, processing };

    Kind kind = Kind::idle;
    std::string app{};  // detected, recording
    double since = 0;   // recording: seconds since the Unix epoch

    static NotetakerState idle() { return {}; }
    static NotetakerState processing() { return {Kind::processing}; }
    static NotetakerState detected(std::string app) { return {Kind::detected, std::move(app)}; }
    static NotetakerState recording(std::string app, double since) {
        return {Kind::recording, std::move(app), since};
    }

    bool is(Kind k) const { return kind == k; }
    // "idle", "detected", "recording", "processing"
    const char* name() const {
        switch (kind) {
            case Kind::detected:
                return "detected";
            case Kind::recording:
                return "recording";
            case Kind::processing:
                return "processing";
            case Kind::idle:
                break;
        }
        return "idle";
    }

    bool operator==(const NotetakerState&) const = default;
};

}  // namespace tevra
