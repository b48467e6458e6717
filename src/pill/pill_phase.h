#pragma once

#include <optional>
#include <string_view>

namespace tevra {

// How much of the pill shows: a small tab at the edge, the compact card under
// the mouse, the history card, or the meter of a capture.
enum class PillPhase { idle, peek, full, recording };

// The edge of the screen that a pill sits on.
enum class PillDock { bottom, top, left, right };

constexpr bool isVertical(PillDock dock) {
    return dock == PillDock::left || dock == PillDock::right;
}

constexpr std::string_view rawValue(PillPhase phase) {
    switch (phase) {
        case PillPhase::idle:
            return "idle";
        case PillPhase::peek:
            return "peek";
        case PillPhase::full:
            return "full";
        case PillPhase::recording:
            return "recording";
    }
    return "idle";
}

constexpr std::string_view rawValue(PillDock dock) {
    switch (dock) {
        case PillDock::bottom:
            return "bottom";
        case PillDock::top:
            return "top";
        case PillDock::left:
            return "left";
        case PillDock::right:
            return "right";
    }
    return "bottom";
}

constexpr std::optional<PillPhase> pillPhaseFromRaw(std::string_view raw) {
    for (PillPhase phase :
         {PillPhase::idle, PillPhase::peek, PillPhase::full, PillPhase::recording}) {
        if (rawValue(phase) == raw) {
            return phase;
        }
    }
    return std::nullopt;
}

constexpr std::optional<PillDock> pillDockFromRaw(std::string_view raw) {
    for (PillDock dock : {PillDock::bottom, PillDock::top, PillDock::left, PillDock::right}) {
        if (rawValue(dock) == raw) {
            return dock;
        }
    }
    return std::nullopt;
}

}  // namespace tevra
