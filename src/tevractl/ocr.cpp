// tevractl ocr: the text of a picture, read by the recognisers of the
// screenshot voice and of the selection tool.
#include <nlohmann/json.hpp>
#include <ostream>

#include "screen_text/ocr/grey_image.h"
#include "screen_text/ocr/tesseract_line_recognizer.h"
#include "screen_text/ocr/tesseract_word_recognizer.h"
#include "screen_text/screen_ocr.h"
#include "screen_text/selection_capture_controller.h"
#include "screen_text/selection_state.h"
#include "tevractl/commands.h"

namespace tevra::ctl {
namespace {

int usageError(const std::string& message, std::ostream& err) {
    err << "tevractl ocr: " << message << "\n\n" << helpFor("ocr");
    return 2;
}

nlohmann::json wordsAsJson(const WordLayout& layout) {
    nlohmann::json words = nlohmann::json::array();
    for (std::size_t i = 0; i < layout.ordered.size(); ++i) {
        const OCRWord& word = layout.ordered[i];
        words.push_back({{"text", word.text},
                         {"x", word.rect.x},
                         {"y", word.rect.y},
                         {"width", word.rect.width},
                         {"height", word.rect.height},
                         {"line", layout.lineOf[i]},
                         {"column", layout.column[i]}});
    }
    return words;
}

}  // namespace

int ocr(WeftRuntime&, const Args& args, std::ostream& out, std::ostream& err) {
    std::string path;
    bool words = false;
    bool json = false;
    for (const std::string& a : args) {
        if (a == "--words") {
            words = true;
        } else if (a == "--json") {
            json = true;
        } else if (a.size() > 1 && a[0] == '-') {
            return usageError("unknown option " + a, err);
        } else if (path.empty()) {
            path = a;
        } else {
            return usageError("one picture at a time", err);
        }
    }
    if (path.empty()) {
        return usageError("which picture?", err);
    }
    const auto image = readImageFile(path);
    if (!image) {
        err << "tevractl ocr: " << path << " is not a readable picture\n";
        return 2;
    }
    try {
        if (!words && !json) {
            const auto lines = TesseractLineRecognizer().readLines(path);
            const std::string text = lines ? ScreenOCR::joinLines(*lines) : std::string();
            if (text.empty()) {
                err << "tevractl ocr: no text found in " << path << "\n";
                return 1;
            }
            out << text << "\n";
            return 0;
        }
        TesseractWordRecognizer recognizer;
        const auto found = SelectionCaptureController::ocrWords(
            *image,
            [&](std::optional<Rect> region) { return recognizer.recognizeWords(*image, region); });
        if (found.empty()) {
            err << "tevractl ocr: no text found in " << path << "\n";
            return 1;
        }
        if (json) {
            out << wordsAsJson(WordSelection::readingOrderColumns(found)).dump(2) << "\n";
        } else {
            out << SelectionState(image->width, image->height, found, {}).debugLinesDump();
        }
        return 0;
    } catch (const std::exception& e) {
        err << "tevractl ocr: " << e.what() << "\n";
        return 1;
    }
}

}  // namespace tevra::ctl
