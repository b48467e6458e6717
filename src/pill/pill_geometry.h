#pragma once

namespace tevra {

// Plain geometry in points, Y down as on the X11 screen and in Qt.
struct PillPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const PillPoint&, const PillPoint&) = default;
};

struct PillSize {
    double width = 0;
    double height = 0;
    friend bool operator==(const PillSize&, const PillSize&) = default;
};

struct PillRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double midX() const { return x + width / 2; }
    double midY() const { return y + height / 2; }
    double bottom() const { return y + height; }
    friend bool operator==(const PillRect&, const PillRect&) = default;
};

}  // namespace tevra
