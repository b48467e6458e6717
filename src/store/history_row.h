#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tevra {

// One dictation as history keeps it. id is 0 until the row is read back.
struct HistoryRow {
    int64_t id = 0;
    double ts = currentTimestamp();  // seconds since the Unix epoch
    std::string app{};
    std::string raw{};
    std::string polished{};
    std::optional<std::string> language{};
    int64_t durationMs = 0;
    int64_t sttMs = 0;
    int64_t polishMs = 0;
    int64_t insertMs = 0;
    int64_t words = 0;
    std::string sttBackend{};
    std::string polishBackend{};

    bool operator==(const HistoryRow&) const = default;

    static double currentTimestamp() {
        using namespace std::chrono;
        return duration<double>(system_clock::now().time_since_epoch()).count();
    }
};

}  // namespace tevra
