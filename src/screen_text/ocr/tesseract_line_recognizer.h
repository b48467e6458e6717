#pragma once

#include <string>

#include "screen_text/region_capture.h"

namespace tevra {

// The screenshot voice's recogniser: Tesseract's text lines of a picture
// file. An engine is made for each reading on the calling thread and goes
// with it, so nothing stays in memory between screenshots.
class TesseractLineRecognizer : public LineRecognizer {
public:
    static constexpr const char* defaultLanguages = "pol+eng+chi_sim+vie";

    explicit TesseractLineRecognizer(std::string languages = defaultLanguages);

    std::optional<std::vector<std::string>> readLines(
        const std::filesystem::path& picture) override;

private:
    std::string languages_;
};

}  // namespace tevra
