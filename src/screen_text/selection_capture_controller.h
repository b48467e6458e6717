#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/work_pool.h"
#include "capture/clipboard.h"
#include "capture/focus_probe.h"
#include "capture/hotkey_backend.h"
#include "screen_text/screen_source.h"
#include "screen_text/selection_overlay.h"
#include "screen_text/window_activator.h"
#include "screen_text/word_recognizer.h"

namespace tevra {

// Everything the selection tool drives, made by the composition root.
struct SelectionServices {
    MainQueue* queue = nullptr;
    // Runs the capture and the recognition off the main thread.
    std::shared_ptr<WorkPool> work;
    std::shared_ptr<ScreenSource> screens;
    std::shared_ptr<WindowList> windows;
    std::shared_ptr<ScreenGrabber> grabber;
    std::shared_ptr<WordRecognizer> recognizer;
    SelectionOverlayFactory makeOverlay;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<FocusProbe> focus;
    std::shared_ptr<WindowActivator> activator;
    LogLine log;
};

// The selection tool: freezes the screen under the pointer, shows it in the
// overlay at once, reads its words on worker threads, and lets the user pick
// text like text in a document. Return puts the picks on the clipboard and
// hands them to onCopied; Escape, or the hotkey again, leaves. Either way the
// application that had the focus gets it back.
//
// Lives in a std::shared_ptr: the overlay and the work hold it weakly. Main
// thread only.
class SelectionCaptureController : public std::enable_shared_from_this<SelectionCaptureController> {
public:
    // Pictures longer than this on their long side are read in strips.
    static constexpr int tileAboveLongSide = 3000;
    static constexpr double tileOverlap = 0.2;
    // The recogniser keeps its engines this long after the tool was last used.
    static constexpr double engineKeepSec = 300;

    static constexpr const char* permissionMessage =
        "Allow Tevra to read the screen, then press the talk key + 6 (Alt+7) again";
    static constexpr const char* captureFailedMessage =
        "Capture failed \u2014 does the desktop let Tevra read the screen?";
    static constexpr const char* noTextMessage =
        "No text found on screen (protected content shows blank)";

    static std::shared_ptr<SelectionCaptureController> create(SelectionServices services);
    ~SelectionCaptureController();
    SelectionCaptureController(const SelectionCaptureController&) = delete;
    SelectionCaptureController& operator=(const SelectionCaptureController&) = delete;

    // A short message for the user (the HUD shows it).
    std::function<void(const std::string&)> onMessage = [](const std::string&) {};
    // The text, after it went to the clipboard.
    std::function<void(const std::string&)> onCopied = [](const std::string&) {};

    // True while the overlay is up, words or not.
    bool isActive() const { return overlay_ != nullptr; }
    // Starts the tool, or cancels it when it is up.
    void toggle();

    using Pass = std::function<std::vector<OCRWord>(std::optional<Rect> region)>;
    // One pass over the picture, or vertical strips with 20% overlap on each
    // side above tileAboveLongSide pixels (two, three above 5200), deduplicated.
    // A single pass throws on; a failing strip adds nothing.
    static std::vector<OCRWord> ocrWords(const ScreenImage& image, const Pass& pass);
    // The first word of each text at one place (1/1000 across, 1/300 up).
    static std::vector<OCRWord> dedupe(const std::vector<OCRWord>& words);

private:
    explicit SelectionCaptureController(SelectionServices services);

    void start();
    void present(std::shared_ptr<const ScreenImage> image, const ScreenArea& screen,
                 const std::vector<Rect>& windows);
    void recognise(std::shared_ptr<const ScreenImage> image);
    void captureFailed(const std::string& error);
    void finish(std::optional<std::string> text);
    void dismiss();
    void log(const std::string& line) const;

    SelectionServices services_;
    std::unique_ptr<SelectionOverlay> overlay_;
    std::optional<FrontApplication> previousApp_;
    // Each run has its number; results of an earlier run are dropped.
    std::uint64_t run_ = 0;
    bool capturing_ = false;
    std::stop_source stopRecognition_;
    TimerHandle releaseEngines_;
};

}  // namespace tevra
