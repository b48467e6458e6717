#include "screen_text/ocr/tesseract_line_recognizer.h"

#include "screen_text/ocr/grey_image.h"
#include "screen_text/ocr/tesseract_engine.h"

namespace tevra {

TesseractLineRecognizer::TesseractLineRecognizer(std::string languages)
    : languages_(std::move(languages)) {}

std::optional<std::vector<std::string>> TesseractLineRecognizer::readLines(
    const std::filesystem::path& picture) {
    const auto image = readImageFile(picture);
    if (!image) {
        return std::nullopt;
    }
    const GreyImage grey = toGrey(*image);
    TesseractEngine engine(languages_);
    std::vector<std::string> lines;
    for (const auto& line : engine.recognise(grey, {0, 0, grey.width, grey.height})) {
        lines.push_back(TesseractEngine::lineText(line));
    }
    return lines;
}

}  // namespace tevra
