#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

#include "screen_text/screen_image.h"

namespace tevra {

// A picture in 8-bit grey, rows from the top: what the recognisers read.
struct GreyImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    std::uint8_t at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

// Luminance, with the weights of ITU-R BT.601.
GreyImage toGrey(const ScreenImage& image);

// A PNG, JPEG, TIFF, BMP, GIF or WebP file as a picture; nullopt when the
// file is missing or is none of those.
std::optional<ScreenImage> readImageFile(const std::filesystem::path& file);

// A pixel rectangle, rows from the top.
struct PixelRect {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelRect&) const = default;
};

// Cuts a rectangle into up to `count` bands of about equal height, each cut on
// the quietest pixel row (the least change from pixel to pixel along it)
// within a tenth of the height of where an even cut would fall: between two
// lines of text rather than through one. A rectangle too low to share stays
// whole.
std::vector<PixelRect> splitIntoBands(const GreyImage& image, PixelRect area, int count);

}  // namespace tevra
