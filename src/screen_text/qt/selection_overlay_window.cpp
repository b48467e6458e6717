#include "screen_text/qt/selection_overlay_window.h"

#include <QPointer>
#include <QVBoxLayout>

namespace tevra {
namespace {

QPointer<SelectionOverlayWindow> current;

class QtSelectionOverlay : public SelectionOverlay {
public:
    explicit QtSelectionOverlay(SelectionOverlayWindow* window) : window_(window) {
        current = window;
        window_->view()->onFinish = [this](std::optional<std::string> text) {
            // A copy: the call may end this overlay, and its onFinish with it.
            if (auto finish = onFinish) {
                finish(std::move(text));
            }
        };
    }
    // The controller lets go of the overlay from within the view's own key
    // event: the window goes once that event is over.
    ~QtSelectionOverlay() override { close(); }

    void show() override { window_->showOverScreen(); }
    void setWords(const std::vector<OCRWord>& words) override {
        if (window_) {
            window_->view()->setWords(words);
        }
    }
    void close() override {
        if (window_) {
            if (current == window_) {
                current.clear();
            }
            window_->view()->onFinish = nullptr;
            window_->release();
            window_->deleteLater();
            window_.clear();
        }
    }

private:
    QPointer<SelectionOverlayWindow> window_;
};

}  // namespace

SelectionOverlayWindow::SelectionOverlayWindow(std::shared_ptr<const ScreenImage> image,
                                               const ScreenArea& screen, std::vector<Rect> windows)
    : ScreenGrabWindow(screen), view_(new SelectionView(std::move(image), std::move(windows))) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view_);
    setFocusProxy(view_);
}

SelectionOverlayFactory qtSelectionOverlays() {
    return [](std::shared_ptr<const ScreenImage> image, const ScreenArea& screen,
              const std::vector<Rect>& windows) -> std::unique_ptr<SelectionOverlay> {
        return std::make_unique<QtSelectionOverlay>(
            new SelectionOverlayWindow(std::move(image), screen, windows));
    };
}

SelectionOverlayWindow* currentSelectionOverlay() {
    return current.data();
}

}  // namespace tevra
