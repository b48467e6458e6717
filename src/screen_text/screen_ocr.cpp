#include "screen_text/screen_ocr.h"

#include <system_error>
#include <utility>

#include "base/text.h"
#include "base/uuid.h"

namespace tevra {

ScreenOCR::ScreenOCR(MainQueue& queue, std::shared_ptr<WorkPool> work,
                     std::shared_ptr<RegionCapture> capture,
                     std::shared_ptr<LineRecognizer> recognizer, LogLine log,
                     std::filesystem::path tempDir)
    : queue_(queue),
      work_(std::move(work)),
      capture_(std::move(capture)),
      recognizer_(std::move(recognizer)),
      log_(std::move(log)),
      tempDir_(std::move(tempDir)) {}

std::string ScreenOCR::joinLines(const std::vector<std::string>& lines) {
    std::string joined;
    for (std::size_t k = 0; k < lines.size(); ++k) {
        if (k > 0) {
            joined += '\n';
        }
        joined += lines[k];
    }
    return text::trim(joined);
}

void ScreenOCR::captureAndRead(Completion completion) {
    const std::filesystem::path png = tempDir_ / ("tevra-ocr-" + newUUID() + ".png");
    MainQueue* queue = &queue_;
    auto read = [queue, png, work = work_, recognizer = recognizer_, log = log_,
                 completion = std::move(completion)](std::exception_ptr launchError) mutable {
        if (launchError) {
            completion(launchError);
            return;
        }
        work->run([queue, png, recognizer, log, completion = std::move(completion)] {
            Result result;
            try {
                const auto lines = recognizer->readLines(png);
                if (!lines) {
                    // A cancelled selection and an unreadable file are one event.
                    result = std::make_exception_ptr(OCRError::cancelled());
                } else {
                    std::string text = joinLines(*lines);
                    if (log) {
                        log("OCR: " + std::to_string(lines->size()) + " lines, " +
                            std::to_string(text::characterCount(text)) + " chars");
                    }
                    result = text.empty() ? Result(std::make_exception_ptr(OCRError::noText()))
                                          : Result(std::move(text));
                }
            } catch (...) {
                result = std::current_exception();
            }
            std::error_code ignored;
            std::filesystem::remove(png, ignored);
            queue->post([completion, result = std::move(result)] { completion(result); });
        });
    };
    capture_->capture(png, std::move(read));
}

}  // namespace tevra
