#include "screen_text/qt/region_picker.h"

#include <QPointer>

#include "base/error.h"
#include "screen_text/qt/region_picker_window.h"

namespace tevra {
namespace {

QPointer<RegionPickerWindow> shown;

}  // namespace

RegionPicker::RegionPicker(std::shared_ptr<ScreenSource> screens,
                           std::shared_ptr<ScreenGrabber> grabber)
    : screens_(std::move(screens)), grabber_(std::move(grabber)) {}

RegionPicker::~RegionPicker() {
    if (shown) {
        shown->onFinish = nullptr;
        shown->release();
        shown->deleteLater();
    }
}

RegionPickerWindow* RegionPicker::current() {
    return shown.data();
}

void RegionPicker::capture(const std::filesystem::path& png,
                           std::function<void(std::exception_ptr launchError)> done) {
    std::shared_ptr<const ScreenImage> image;
    std::optional<ScreenArea> screen;
    try {
        screen = screens_->screenUnderPointer();
        if (!screen) {
            throw MessageError("no screen to capture");
        }
        image = std::make_shared<const ScreenImage>(grabber_->capture(*screen));
    } catch (...) {
        done(std::current_exception());
        return;
    }
    auto* window = new RegionPickerWindow(std::move(image), *screen);
    shown = window;
    window->onFinish = [window, png, done = std::move(done)](std::optional<QImage> region) {
        window->release();
        window->deleteLater();
        // A picture that cannot be written is a cancel, as no file is.
        if (region) {
            region->save(QString::fromStdString(png.string()), "PNG");
        }
        done(nullptr);
    };
    window->showOverScreen();
}

}  // namespace tevra
