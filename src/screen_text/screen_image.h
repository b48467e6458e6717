#pragma once

#include <cstdint>
#include <vector>

namespace tevra {

// A picture of the screen in memory: rows from the top, each pixel one 32-bit
// word 0xffRRGGBB (the layout of an X11 TrueColor image and of Qt's RGB32).
struct ScreenImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // width * height, row after row

    std::uint32_t at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

}  // namespace tevra
