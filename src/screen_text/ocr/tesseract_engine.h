#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "screen_text/ocr/grey_image.h"
#include "screen_text/word_selection.h"

namespace tesseract {
class TessBaseAPI;
}

namespace tevra {

// One Tesseract engine with its languages loaded, run on one thread with
// OpenMP held to that thread: several engines side by side use the cores far
// better than one engine's own threads, which mostly wait for each other.
// Not thread-safe: one thread uses it, and it is made on that thread.
class TesseractEngine {
public:
    // A recognised token in pixels of the whole picture, rows from the top.
    struct Token {
        std::string text;
        PixelRect box;
    };
    // The tokens of one text line, left to right.
    using Line = std::vector<Token>;

    // Throws an Error naming the packages to install when a language cannot
    // be loaded.
    explicit TesseractEngine(const std::string& languages);
    ~TesseractEngine();
    TesseractEngine(const TesseractEngine&) = delete;
    TesseractEngine& operator=(const TesseractEngine&) = delete;

    // The lines in the recogniser's order. A stop request ends the reading
    // early with what was found.
    std::vector<Line> recognise(const GreyImage& image, PixelRect area, std::stop_token stop = {});

    // Tesseract splits runs of Chinese and Japanese into pieces and puts
    // blanks between them that the picture does not have; pieces that meet on
    // such letters join into one token again, as text without blanks reads.
    static Line joinPieces(const std::vector<Token>& pieces);
    // A line's tokens joined by blanks.
    static std::string lineText(const Line& line);
    // A token's box normalised to the whole picture, Y up.
    static OCRWord toWord(const Token& token, int imageWidth, int imageHeight);

private:
    std::unique_ptr<tesseract::TessBaseAPI> api_;
};

}  // namespace tevra
