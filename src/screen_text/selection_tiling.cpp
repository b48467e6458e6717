#include <algorithm>
#include <cmath>
#include <set>

#include "screen_text/selection_capture_controller.h"

namespace tevra {

std::vector<OCRWord> SelectionCaptureController::ocrWords(const ScreenImage& image,
                                                          const Pass& pass) {
    const int longSide = std::max(image.width, image.height);
    if (longSide <= tileAboveLongSide) {
        return pass(std::nullopt);
    }
    // Vertical strips whatever the picture's shape; a word cut by a strip's
    // edge is seen whole in the neighbouring strip.
    const int n = longSide <= 5200 ? 2 : 3;
    const double t = 1.0 / n;
    std::vector<OCRWord> collected;
    for (int i = 0; i < n; ++i) {
        const double x0 = std::max(0.0, t * i - t * tileOverlap);
        const double x1 = std::min(1.0, t * i + t + t * tileOverlap);
        try {
            auto words = pass(Rect{x0, 0, x1 - x0, 1});
            collected.insert(collected.end(), words.begin(), words.end());
        } catch (const std::exception&) {
            // The other strips stand.
        }
    }
    return dedupe(collected);
}

std::vector<OCRWord> SelectionCaptureController::dedupe(const std::vector<OCRWord>& words) {
    std::set<std::string> seen;
    std::vector<OCRWord> out;
    for (const OCRWord& word : words) {
        const std::string key = word.text + "|" +
                                std::to_string(std::llround(word.rect.midX() * 1000)) + "|" +
                                std::to_string(std::llround(word.rect.midY() * 300));
        if (seen.insert(key).second) {
            out.push_back(word);
        }
    }
    return out;
}

}  // namespace tevra
