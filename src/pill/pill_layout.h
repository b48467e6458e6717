#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "pill/pill_placement.h"

namespace tevra {

// Where the user left the pill on each screen, kept across starts in
// "pill_layout.json" in the data directory: a JSON object whose keys are the
// screens' numbers in decimal, each holding {"fx", "fy", "edge"}. One for
// all the screens; main thread only.
class PillLayout {
public:
    static constexpr const char* fileName = "pill_layout.json";

    // A screen's number: the same for the same screen name at every start.
    static uint32_t screenKey(std::string_view screenName);

    // Reads the file. A missing one remembers nothing; one that is not such an
    // object is moved aside (never deleted) and nothing is remembered.
    explicit PillLayout(std::filesystem::path dataDir);

    const std::filesystem::path& url() const { return url_; }

    // The spot remembered for a screen; an edge that names no dock counts as
    // the bottom.
    std::optional<PillSpot> spot(uint32_t screen) const;
    // Remembers a spot and writes the whole file at once, private to the
    // user. A failure to write is dropped: the spot still holds until the end.
    void set(uint32_t screen, double fx, double fy, PillDock dock);

private:
    struct Spot {
        double fx = 0;
        double fy = 0;
        std::string edge;
    };

    void read();

    std::filesystem::path dataDir_;
    std::filesystem::path url_;
    std::map<std::string, Spot> map_;
};

}  // namespace tevra
