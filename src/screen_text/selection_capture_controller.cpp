#include "screen_text/selection_capture_controller.h"

#include <utility>

#include "base/error.h"

namespace tevra {

std::shared_ptr<SelectionCaptureController> SelectionCaptureController::create(
    SelectionServices services) {
    return std::shared_ptr<SelectionCaptureController>(
        new SelectionCaptureController(std::move(services)));
}

SelectionCaptureController::SelectionCaptureController(SelectionServices services)
    : services_(std::move(services)) {}

SelectionCaptureController::~SelectionCaptureController() {
    stopRecognition_.request_stop();
    releaseEngines_.cancel();
    if (overlay_) {
        overlay_->close();
    }
}

void SelectionCaptureController::log(const std::string& line) const {
    if (services_.log) {
        services_.log(line);
    }
}

void SelectionCaptureController::toggle() {
    if (overlay_) {
        dismiss();
    } else if (!capturing_) {
        start();
    }
}

void SelectionCaptureController::start() {
    if (!services_.screens->canCapture()) {
        services_.screens->requestCapture();
        log("selection: Grant Tevra Screen Recording, then press Fn 6 (\u23257) again");
        onMessage(permissionMessage);
        return;
    }
    previousApp_ = services_.focus->frontApplication();
    const auto screen = services_.screens->screenUnderPointer();
    if (!screen) {
        return;
    }
    // The windows as they stand now, before the overlay covers them.
    std::vector<Rect> windows = services_.windows->windowRects(*screen);
    releaseEngines_.cancel();
    capturing_ = true;
    const std::uint64_t run = ++run_;
    std::weak_ptr<SelectionCaptureController> weak = weak_from_this();
    services_.work->run([weak, run, screen = *screen, windows = std::move(windows),
                         grabber = services_.grabber, queue = services_.queue]() mutable {
        std::shared_ptr<const ScreenImage> image;
        std::string error;
        try {
            image = std::make_shared<const ScreenImage>(grabber->capture(screen));
        } catch (const std::exception& e) {
            error = describe(e);
        }
        queue->post([weak, run, image, error, screen, windows = std::move(windows)] {
            auto self = weak.lock();
            if (!self || run != self->run_) {
                return;
            }
            self->capturing_ = false;
            if (!image) {
                self->captureFailed(error);
                return;
            }
            self->present(image, screen, windows);
            self->recognise(image);
        });
    });
}

void SelectionCaptureController::captureFailed(const std::string& error) {
    log("selection capture failed: " + error);
    log("selection: Capture failed \u2014 is Screen Recording granted?");
    onMessage(captureFailedMessage);
}

void SelectionCaptureController::present(std::shared_ptr<const ScreenImage> image,
                                         const ScreenArea& screen,
                                         const std::vector<Rect>& windows) {
    overlay_ = services_.makeOverlay(std::move(image), screen, windows);
    std::weak_ptr<SelectionCaptureController> weak = weak_from_this();
    overlay_->onFinish = [weak](std::optional<std::string> text) {
        if (auto self = weak.lock()) {
            self->finish(std::move(text));
        }
    };
    overlay_->show();
}

void SelectionCaptureController::recognise(std::shared_ptr<const ScreenImage> image) {
    stopRecognition_ = std::stop_source();
    std::weak_ptr<SelectionCaptureController> weak = weak_from_this();
    services_.work->run([weak, run = run_, image, stop = stopRecognition_.get_token(),
                         recognizer = services_.recognizer, queue = services_.queue] {
        std::vector<OCRWord> words;
        std::optional<std::string> error;
        try {
            words = ocrWords(*image, [&](std::optional<Rect> region) {
                return recognizer->recognizeWords(*image, region, stop);
            });
        } catch (const std::exception& e) {
            error = describe(e);
        }
        queue->post([weak, run, words = std::move(words), error] {
            auto self = weak.lock();
            if (!self || run != self->run_ || !self->overlay_) {
                return;  // left during recognition
            }
            if (error) {
                self->dismiss();
                self->captureFailed(*error);
            } else if (words.empty()) {
                self->dismiss();
                self->log("selection: " + std::string(noTextMessage));
                self->onMessage(noTextMessage);
            } else {
                self->overlay_->setWords(words);
            }
        });
    });
}

void SelectionCaptureController::finish(std::optional<std::string> text) {
    // An empty text (Return with nothing picked) is a cancel.
    if (text && !text->empty()) {
        services_.clipboard->setText(*text, /*transient=*/false);
        onCopied(*text);
    }
    dismiss();
}

void SelectionCaptureController::dismiss() {
    ++run_;
    stopRecognition_.request_stop();
    if (overlay_) {
        overlay_->close();
        overlay_.reset();
    }
    if (previousApp_) {
        services_.activator->activate(*previousApp_);
        previousApp_.reset();
    }
    std::weak_ptr<SelectionCaptureController> weak = weak_from_this();
    releaseEngines_ = services_.queue->after(engineKeepSec, [weak] {
        if (auto self = weak.lock()) {
            self->services_.recognizer->release();
        }
    });
}

}  // namespace tevra
