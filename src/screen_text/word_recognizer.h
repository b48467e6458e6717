#pragma once

#include <optional>
#include <stop_token>
#include <vector>

#include "screen_text/rect.h"
#include "screen_text/screen_image.h"
#include "screen_text/word_selection.h"

namespace tevra {

// Word-level OCR: the tokens of a picture, each with its box normalised to
// the whole picture (Y up), whether or not a region was given.
class WordRecognizer {
public:
    virtual ~WordRecognizer() = default;

    // Reads the region (normalised, Y up) or the whole picture. Blocks; safe
    // from any thread. Throws an Error when the recogniser cannot run. A
    // stop request ends the reading early with the words found so far.
    virtual std::vector<OCRWord> recognizeWords(const ScreenImage& image,
                                                std::optional<Rect> region,
                                                std::stop_token stop = {}) = 0;
    // Frees what the recogniser keeps between readings (its engines); the
    // next reading makes them anew.
    virtual void release() {}
};

}  // namespace tevra
