#include "screen_text/ocr/grey_image.h"

#include <leptonica/allheaders.h>

#include <cstdlib>
#include <limits>

namespace tevra {
namespace {

// Bands lower than this are not worth an engine of their own.
constexpr int kMinBandHeight = 64;

std::uint8_t luminance(std::uint32_t rgb) {
    const std::uint32_t r = (rgb >> 16) & 0xff;
    const std::uint32_t g = (rgb >> 8) & 0xff;
    const std::uint32_t b = rgb & 0xff;
    return static_cast<std::uint8_t>((r * 299 + g * 587 + b * 114 + 500) / 1000);
}

// The sum of the differences between neighbours along one row.
long rowActivity(const GreyImage& image, int y, int left, int width) {
    long sum = 0;
    const std::uint8_t* row =
        image.pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width);
    for (int x = left + 1; x < left + width; ++x) {
        sum += std::abs(static_cast<int>(row[x]) - static_cast<int>(row[x - 1]));
    }
    return sum;
}

}  // namespace

GreyImage toGrey(const ScreenImage& image) {
    GreyImage grey{image.width, image.height, {}};
    grey.pixels.resize(image.pixels.size());
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        grey.pixels[i] = luminance(image.pixels[i]);
    }
    return grey;
}

std::optional<ScreenImage> readImageFile(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return std::nullopt;
    }
    // Leptonica's complaints about a file that is no picture go to stderr;
    // the caller says it better.
    setMsgSeverity(L_SEVERITY_NONE);
    Pix* read = pixRead(file.c_str());
    if (read == nullptr) {
        return std::nullopt;
    }
    Pix* rgb = pixConvertTo32(read);
    pixDestroy(&read);
    if (rgb == nullptr) {
        return std::nullopt;
    }
    ScreenImage image;
    image.width = static_cast<int>(pixGetWidth(rgb));
    image.height = static_cast<int>(pixGetHeight(rgb));
    image.pixels.resize(static_cast<std::size_t>(image.width) *
                        static_cast<std::size_t>(image.height));
    const l_uint32* data = pixGetData(rgb);
    const int wordsPerLine = static_cast<int>(pixGetWpl(rgb));
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            // Leptonica keeps red in the top byte: 0xRRGGBBAA.
            const l_uint32 pixel = data[y * wordsPerLine + x];
            image.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(image.width) +
                         static_cast<std::size_t>(x)] = 0xff000000u | (pixel >> 8);
        }
    }
    pixDestroy(&rgb);
    return image;
}

std::vector<PixelRect> splitIntoBands(const GreyImage& image, PixelRect area, int count) {
    if (count < 2 || area.height < 2 * kMinBandHeight || area.width < 2) {
        return {area};
    }
    count = std::min(count, area.height / kMinBandHeight);
    std::vector<PixelRect> bands;
    int top = area.top;
    const int bottom = area.top + area.height;
    const int reach = area.height / 10;
    for (int k = 1; k < count; ++k) {
        const int even = area.top + area.height * k / count;
        int best = even;
        long quietest = std::numeric_limits<long>::max();
        // Nearest to the even cut first, so that a tie keeps the bands even.
        for (int d = 0; d <= reach; ++d) {
            for (int y : {even - d, even + d}) {
                if (y <= top || y >= bottom - 1) {
                    continue;
                }
                const long activity = rowActivity(image, y, area.left, area.width);
                if (activity < quietest) {
                    quietest = activity;
                    best = y;
                }
            }
        }
        bands.push_back({area.left, top, area.width, best - top});
        top = best;
    }
    bands.push_back({area.left, top, area.width, bottom - top});
    return bands;
}

}  // namespace tevra
