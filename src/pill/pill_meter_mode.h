#pragma once

#include <optional>
#include <string_view>

namespace tevra {

// What the pill's meter shows: the voice, the wave while the text is made, the
// check mark, or the glow of a failure.
enum class PillMeterMode { recording, processing, done, error };

constexpr std::string_view rawValue(PillMeterMode mode) {
    switch (mode) {
        case PillMeterMode::recording:
            return "recording";
        case PillMeterMode::processing:
            return "processing";
        case PillMeterMode::done:
            return "done";
        case PillMeterMode::error:
            return "error";
    }
    return "recording";
}

constexpr std::optional<PillMeterMode> pillMeterModeFromRaw(std::string_view raw) {
    for (PillMeterMode mode : {PillMeterMode::recording, PillMeterMode::processing,
                               PillMeterMode::done, PillMeterMode::error}) {
        if (rawValue(mode) == raw) {
            return mode;
        }
    }
    return std::nullopt;
}

}  // namespace tevra
