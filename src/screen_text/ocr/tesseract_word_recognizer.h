#pragma once

#include <memory>
#include <string>
#include <vector>

#include "screen_text/word_recognizer.h"

namespace tevra {

class SerialQueue;
class TesseractEngine;

// The selection tool's recogniser: Tesseract's words with their boxes, read
// by several engines at once, each on a thread of its own. A picture is cut
// into one band per engine on quiet pixel rows, so that no line of text is
// cut. The engines are made at the first reading (languages load in a few
// tenths of a second) and kept until release().
class TesseractWordRecognizer : public WordRecognizer {
public:
    static constexpr const char* defaultLanguages = "eng+chi_sim+vie";

    explicit TesseractWordRecognizer(std::string languages = defaultLanguages, int engines = 2);
    ~TesseractWordRecognizer() override;

    std::vector<OCRWord> recognizeWords(const ScreenImage& image, std::optional<Rect> region,
                                        std::stop_token stop = {}) override;
    void release() override;

    // Makes the engines now, in the background, so that the first reading
    // does not wait for them.
    void warmUp();

private:
    struct Worker;

    std::string languages_;
    std::vector<std::unique_ptr<Worker>> workers_;
};

}  // namespace tevra
