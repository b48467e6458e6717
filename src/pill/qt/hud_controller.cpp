#include "pill/qt/hud_controller.h"

#include <QGuiApplication>
#include <QScreen>

#include "pill/hud_geometry.h"
#include "pill/qt/hud_panel.h"
#include "pill/qt/meter_view.h"

namespace tevra {

using Mode = HudMeter::Mode;

std::optional<PillRect> HUDController::primaryScreenArea() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen) {
        return std::nullopt;
    }
    const QRect area = screen->availableGeometry();
    return PillRect{static_cast<double>(area.x()), static_cast<double>(area.y()),
                    static_cast<double>(area.width()), static_cast<double>(area.height())};
}

HUDController::HUDController(MainQueue& queue, ScreenArea screenArea)
    : queue_(queue),
      screenArea_(std::move(screenArea)),
      panel_(std::make_unique<HudPanel>()),
      meter_(new MeterView(queue, panel_.get())) {
    const PillRect frame = HudGeometry::meterFrame();
    meter_->setMeterFrame(QRectF(frame.x, frame.y, frame.width, frame.height));
}

HUDController::~HUDController() {
    hideTimer_.cancel();
}

std::shared_ptr<HUDController> HUDController::create(MainQueue& queue, ScreenArea screenArea) {
    return std::make_shared<HUDController>(queue, std::move(screenArea));
}

QWidget* HUDController::panel() const {
    return panel_.get();
}

void HUDController::onMain(std::function<void(HUDController&)> action) {
    queue_.post([weak = weak_from_this(), action = std::move(action)] {
        if (auto self = weak.lock()) {
            action(*self);
        }
    });
}

void HUDController::processing() {
    onMain([](HUDController& self) {
        self.hideTimer_.cancel();
        self.show(Mode::processing);
    });
}

void HUDController::done() {
    onMain([](HUDController& self) {
        self.show(Mode::done);
        self.autoHide(0.85);
    });
}

void HUDController::error(const std::string&) {
    // The message is dropped: the HUD tells a failure by its shake and colour.
    onMain([](HUDController& self) {
        self.show(Mode::error);
        self.shake();
        self.autoHide(1.7);
    });
}

void HUDController::hide() {
    onMain([](HUDController& self) { self.hideNow(); });
}

void HUDController::startRecording(const std::string&, const std::string&) {
    onMain([](HUDController& self) {
        self.hideTimer_.cancel();
        self.show(Mode::recording);
    });
}

void HUDController::updateLevel(double level) {
    onMain([level](HUDController& self) { self.meter_->meter().setLevel(level); });
}

void HUDController::show(Mode mode) {
    meter_->meter().setMode(mode);
    meter_->startAnimating();
    meter_->update();
    position();
    panel_->show();
    // Raised, never activated: the focused application keeps its keyboard.
    panel_->raise();
}

void HUDController::position() {
    if (const auto area = screenArea_()) {
        const PillPoint origin = HudGeometry::panelOrigin(*area);
        panel_->move(static_cast<int>(origin.x), static_cast<int>(origin.y));
    }
}

void HUDController::shake() {
    // From where show() just put the panel, so overlapping shakes end together.
    const QPoint origin = panel_->pos();
    for (const auto& step : HudGeometry::shakeSteps()) {
        queue_.after(step.delay, [weak = weak_from_this(),
                                  x = origin.x() + static_cast<int>(step.offset), y = origin.y()] {
            if (auto self = weak.lock()) {
                self->panel_->move(x, y);
            }
        });
    }
}

void HUDController::autoHide(double seconds) {
    hideTimer_.cancel();
    hideTimer_ = queue_.after(seconds, [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            self->hideNow();
        }
    });
}

void HUDController::hideNow() {
    meter_->meter().setMode(Mode::idle);
    hideTimer_.cancel();
    meter_->stopAnimating();
    panel_->hide();
}

}  // namespace tevra
