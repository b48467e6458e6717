#pragma once

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/error.h"
#include "screen_text/region_capture.h"
#include "screen_text/screen_source.h"
#include "screen_text/selection_overlay.h"
#include "screen_text/window_activator.h"
#include "screen_text/word_recognizer.h"

// Scripted and recording fakes of the screen-text seams.
namespace tevra::testing {

class FakeScreens : public ScreenSource, public WindowList, public ScreenGrabber {
public:
    bool allowed = true;
    int requests = 0;
    std::optional<ScreenArea> screen = ScreenArea{"fake", 0, 0, 400, 200};
    std::vector<Rect> windows;
    // Thrown by capture() when set.
    std::optional<std::string> captureError;

    bool canCapture() override { return allowed; }
    void requestCapture() override { ++requests; }
    std::optional<ScreenArea> screenUnderPointer() override { return screen; }
    std::vector<Rect> windowRects(const ScreenArea&) override { return windows; }
    ScreenImage capture(const ScreenArea& area) override {
        if (captureError) {
            throw MessageError(*captureError);
        }
        return ScreenImage{area.width, area.height,
                           std::vector<std::uint32_t>(area.width * area.height, 0xffffffff)};
    }
};

// Answers each reading with the words (or the error) set for it, and keeps
// the regions it was asked for.
class ScriptedWordRecognizer : public WordRecognizer {
public:
    std::vector<OCRWord> words;
    std::optional<std::string> error;
    std::vector<std::optional<Rect>> regions;
    std::atomic<int> releases{0};

    std::vector<OCRWord> recognizeWords(const ScreenImage&, std::optional<Rect> region,
                                        std::stop_token) override {
        {
            std::lock_guard lock(mutex_);
            regions.push_back(region);
        }
        if (error) {
            throw MessageError(*error);
        }
        return words;
    }
    void release() override { ++releases; }

private:
    std::mutex mutex_;
};

struct OverlayRecord {
    bool shown = false;
    bool closed = false;
    std::optional<std::vector<OCRWord>> words;
    std::vector<Rect> windows;
};

// An overlay that records what it was told; the test finishes it through
// onFinish as the user would.
class RecordingOverlay : public SelectionOverlay {
public:
    explicit RecordingOverlay(std::shared_ptr<OverlayRecord> record) : record_(std::move(record)) {}
    void show() override { record_->shown = true; }
    void setWords(const std::vector<OCRWord>& words) override { record_->words = words; }
    void close() override { record_->closed = true; }

private:
    std::shared_ptr<OverlayRecord> record_;
};

class RecordingActivator : public WindowActivator {
public:
    std::vector<FrontApplication> activated;
    void activate(const FrontApplication& app) override { activated.push_back(app); }
};

// A region capture that writes the given bytes at the path, or nothing.
class ScriptedRegionCapture : public RegionCapture {
public:
    std::optional<std::string> writes;
    std::exception_ptr launchError;
    std::vector<std::filesystem::path> paths;

    void capture(const std::filesystem::path& png,
                 std::function<void(std::exception_ptr)> done) override {
        paths.push_back(png);
        if (writes) {
            std::ofstream(png, std::ios::binary) << *writes;
        }
        done(launchError);
    }
};

// Lines for a file that exists, nullopt for one that does not.
class ScriptedLineRecognizer : public LineRecognizer {
public:
    std::vector<std::string> lines;
    std::optional<std::string> error;

    std::optional<std::vector<std::string>> readLines(const std::filesystem::path& file) override {
        if (!std::filesystem::exists(file)) {
            return std::nullopt;
        }
        if (error) {
            throw MessageError(*error);
        }
        return lines;
    }
};

}  // namespace tevra::testing
