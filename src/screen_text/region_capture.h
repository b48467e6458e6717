#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tevra {

// The interactive region capture: the user drags out a rectangle of the
// screen, and a PNG of it is left at a path; a cancel leaves no file.
class RegionCapture {
public:
    virtual ~RegionCapture() = default;

    // Called on the main thread; returns at once. done runs once on the main
    // thread when the user has finished, with no error whether or not a file
    // was written, or with the error that kept the capture from starting.
    virtual void capture(const std::filesystem::path& png,
                         std::function<void(std::exception_ptr launchError)> done) = 0;
};

// Line-level OCR of a picture file: the text of each line, in the
// recogniser's order.
class LineRecognizer {
public:
    virtual ~LineRecognizer() = default;

    // nullopt when the file is missing or is no picture. Throws an Error when
    // the recogniser cannot run. Blocks; safe from any thread.
    virtual std::optional<std::vector<std::string>> readLines(
        const std::filesystem::path& picture) = 0;
};

}  // namespace tevra
