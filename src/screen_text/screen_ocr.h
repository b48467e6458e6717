#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/error.h"
#include "base/main_queue.h"
#include "base/work_pool.h"
#include "capture/hotkey_backend.h"
#include "screen_text/region_capture.h"

namespace tevra {

class OCRError : public Error {
public:
    enum class Kind { cancelled, noText };

    static OCRError cancelled() { return OCRError(Kind::cancelled, "screenshot cancelled"); }
    static OCRError noText() { return OCRError(Kind::noText, "no text found in that selection"); }

    Kind kind() const { return kind_; }
    bool operator==(const OCRError& other) const { return kind_ == other.kind_; }

private:
    OCRError(Kind kind, std::string text) : Error(std::move(text)), kind_(kind) {}
    Kind kind_;
};

// The text the user drags out a region of the screen for: the screenshot
// voice's reader. A region capture leaves a picture in the system's temporary
// directory, a worker reads its lines, and the file is removed.
class ScreenOCR {
public:
    // The text (never empty), or the error: an OCRError, or what the
    // platform reported.
    using Result = std::variant<std::string, std::exception_ptr>;
    using Completion = std::function<void(Result)>;

    ScreenOCR(MainQueue& queue, std::shared_ptr<WorkPool> work,
              std::shared_ptr<RegionCapture> capture, std::shared_ptr<LineRecognizer> recognizer,
              LogLine log, std::filesystem::path tempDir = std::filesystem::temp_directory_path());

    // Returns at once; completion runs once, on the main queue.
    void captureAndRead(Completion completion);

    // The recognised lines as the result's text: joined by line breaks and
    // trimmed of white space at both ends.
    static std::string joinLines(const std::vector<std::string>& lines);

private:
    MainQueue& queue_;
    std::shared_ptr<WorkPool> work_;
    std::shared_ptr<RegionCapture> capture_;
    std::shared_ptr<LineRecognizer> recognizer_;
    LogLine log_;
    std::filesystem::path tempDir_;
};

}  // namespace tevra
