#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tevra {

// The sections of the main window's sidebar, in its order. A section's raw
// value is also its identity and its title.
enum class TevraSection {
    history,
    notetaker,
    insights,
    modes,
    dictionary,
    replacements,
    snippets,
    tones,
    settings
};

namespace TevraSections {

inline constexpr std::array<TevraSection, 9> all = {
    TevraSection::history,  TevraSection::notetaker,  TevraSection::insights,
    TevraSection::modes,    TevraSection::dictionary, TevraSection::replacements,
    TevraSection::snippets, TevraSection::tones,      TevraSection::settings};

// The window opens on this one.
inline constexpr TevraSection first = TevraSection::history;

constexpr std::string_view rawValue(TevraSection section) {
    switch (section) {
        case TevraSection::history:
            return "History";
        case TevraSection::notetaker:
            return "Notetaker";
        case TevraSection::insights:
            return "Insights";
        case TevraSection::modes:
            return "Modes";
        case TevraSection::dictionary:
            return "Dictionary";
        case TevraSection::replacements:
            return "Replacements";
        case TevraSection::snippets:
            return "Snippets";
        case TevraSection::tones:
            return "App tones";
        case TevraSection::settings:
            return "Settings";
    }
    return {};
}

constexpr std::string_view title(TevraSection section) {
    return rawValue(section);
}

constexpr std::optional<TevraSection> fromRawValue(std::string_view value) {
    for (TevraSection section : all) {
        if (rawValue(section) == value) {
            return section;
        }
    }
    return std::nullopt;
}

// The sidebar's head.
inline constexpr const char* productName = "Tevra";
inline constexpr const char* tagline = "voice, softly";

}  // namespace TevraSections
}  // namespace tevra
