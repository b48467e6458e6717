#pragma once

#include <algorithm>
#include <optional>

namespace tevra {

// A rectangle of doubles. In the screen-text library it is normalised to the
// captured image: 0 to 1 on both axes, origin at the bottom left, Y up.
struct Rect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double maxX() const { return x + width; }
    double midX() const { return x + width * 0.5; }
    double minY() const { return y; }
    double maxY() const { return y + height; }
    double midY() const { return y + height * 0.5; }

    // The smallest rectangle holding both.
    Rect united(const Rect& other) const {
        const double lowX = std::min(minX(), other.minX());
        const double lowY = std::min(minY(), other.minY());
        return {lowX, lowY, std::max(maxX(), other.maxX()) - lowX,
                std::max(maxY(), other.maxY()) - lowY};
    }

    // The common part, or nullopt when the two do not overlap with a positive
    // area (rectangles that only touch have none).
    std::optional<Rect> intersection(const Rect& other) const {
        const double lowX = std::max(minX(), other.minX());
        const double lowY = std::max(minY(), other.minY());
        const double highX = std::min(maxX(), other.maxX());
        const double highY = std::min(maxY(), other.maxY());
        if (highX <= lowX || highY <= lowY) {
            return std::nullopt;
        }
        return Rect{lowX, lowY, highX - lowX, highY - lowY};
    }

    bool operator==(const Rect&) const = default;
};

}  // namespace tevra
