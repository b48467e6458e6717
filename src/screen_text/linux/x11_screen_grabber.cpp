#include "screen_text/linux/x11_screen_grabber.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <bit>
#include <memory>

#include "base/error.h"
#include "capture/linux/x_error_trap.h"

namespace tevra {
namespace {

struct DisplayCloser {
    void operator()(Display* display) const { XCloseDisplay(display); }
};

struct ImageDestroyer {
    void operator()(XImage* image) const { XDestroyImage(image); }
};

// A channel of a pixel value scaled to 8 bits, whatever its mask.
std::uint32_t channel(unsigned long pixel, unsigned long mask) {
    if (mask == 0) {
        return 0;
    }
    const int shift = std::countr_zero(mask);
    const unsigned long max = mask >> shift;
    return static_cast<std::uint32_t>(((pixel & mask) >> shift) * 255 / max);
}

}  // namespace

ScreenImage X11ScreenGrabber::capture(const ScreenArea& screen) {
    std::unique_ptr<Display, DisplayCloser> display(XOpenDisplay(nullptr));
    if (!display) {
        throw MessageError("cannot open the X display to read the screen");
    }
    std::unique_ptr<XImage, ImageDestroyer> image;
    {
        XErrorTrap trap(display.get());
        image.reset(XGetImage(display.get(), DefaultRootWindow(display.get()), screen.x, screen.y,
                              static_cast<unsigned>(screen.width),
                              static_cast<unsigned>(screen.height), AllPlanes, ZPixmap));
        trap.sync();
    }
    if (!image) {
        throw MessageError("XGetImage could not read the screen " + screen.name);
    }
    ScreenImage out{image->width, image->height, {}};
    out.pixels.resize(static_cast<std::size_t>(out.width) * static_cast<std::size_t>(out.height));
    const bool native = image->bits_per_pixel == 32 && image->red_mask == 0xff0000 &&
                        image->green_mask == 0xff00 && image->blue_mask == 0xff &&
                        image->byte_order == LSBFirst && std::endian::native == std::endian::little;
    for (int y = 0; y < out.height; ++y) {
        std::uint32_t* row = out.pixels.data() + static_cast<std::size_t>(y) * out.width;
        if (native) {
            const auto* source = reinterpret_cast<const std::uint32_t*>(
                image->data + static_cast<std::ptrdiff_t>(y) * image->bytes_per_line);
            for (int x = 0; x < out.width; ++x) {
                row[x] = 0xff000000u | source[x];
            }
            continue;
        }
        for (int x = 0; x < out.width; ++x) {
            const unsigned long pixel = XGetPixel(image.get(), x, y);
            row[x] = 0xff000000u | channel(pixel, image->red_mask) << 16 |
                     channel(pixel, image->green_mask) << 8 | channel(pixel, image->blue_mask);
        }
    }
    return out;
}

}  // namespace tevra
