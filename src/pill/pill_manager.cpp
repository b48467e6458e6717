#include "pill/pill_manager.h"

#include "core/weft_runtime.h"
#include "pill/meter_animation.h"
#include "pill/pill_metrics.h"

namespace tevra {

PillManager::PillManager(MainQueue& queue, WeftRuntime& runtime, NotificationCenter* notifications,
                         std::shared_ptr<PillDesktop> desktop, OnPaste onPaste,
                         std::optional<PillPreview> preview)
    : queue_(queue),
      runtime_(runtime),
      notifications_(notifications),
      desktop_(std::move(desktop)),
      onPaste_(std::move(onPaste)),
      preview_(preview),
      layout_(runtime.dataDir()) {}

std::shared_ptr<PillManager> PillManager::create(MainQueue& queue, WeftRuntime& runtime,
                                                 NotificationCenter* notifications,
                                                 std::shared_ptr<PillDesktop> desktop,
                                                 OnPaste onPaste,
                                                 std::optional<PillPreview> preview) {
    std::shared_ptr<PillManager> manager(new PillManager(
        queue, runtime, notifications, std::move(desktop), std::move(onPaste), preview));
    std::weak_ptr<PillManager> weak = manager;
    manager->desktop_->setScreensChanged([weak] {
        if (auto self = weak.lock()) {
            self->rebuild();
        }
    });
    return manager;
}

PillManager::~PillManager() {
    collapseWork_.cancel();
    desktop_->setScreensChanged(nullptr);
}

void PillManager::onMain(void (PillManager::*operation)()) {
    if (queue_.isMainThread()) {
        (this->*operation)();
        return;
    }
    queue_.post([weak = weak_from_this(), operation] {
        if (auto self = weak.lock()) {
            ((*self).*operation)();
        }
    });
}

void PillManager::rebuild() {
    for (const auto& controller : controllers_) {
        controller->hide();
    }
    controllers_.clear();
    const PillContext context{queue_,         *desktop_, layout_, runtime_,
                              notifications_, onPaste_,  preview_};
    for (const PillScreen& screen : desktop_->screens()) {
        controllers_.push_back(PillController::create(context, screen.key));
    }
    if (visible_) {
        for (const auto& controller : controllers_) {
            controller->show();
        }
    }
}

void PillManager::show() {
    onMain(&PillManager::showNow);
}

void PillManager::showNow() {
    visible_ = true;
    if (controllers_.empty()) {
        rebuild();
        return;
    }
    for (const auto& controller : controllers_) {
        controller->show();
    }
}

void PillManager::hide() {
    onMain(&PillManager::hideNow);
}

void PillManager::hideNow() {
    visible_ = false;
    for (const auto& controller : controllers_) {
        controller->hide();
    }
}

void PillManager::reload() {
    onMain(&PillManager::reloadNow);
}

void PillManager::reloadNow() {
    for (const auto& controller : controllers_) {
        controller->reload();
    }
}

void PillManager::startRecording() {
    onMain(&PillManager::startRecordingNow);
}

void PillManager::startRecordingNow() {
    collapseWork_.cancel();
    if (!visible_) {
        showNow();
    }
    const std::optional<uint32_t> main = desktop_->mainScreen();
    recordingController_.reset();
    for (const auto& controller : controllers_) {
        if (main && controller->displayID() == *main) {
            recordingController_ = controller;
            break;
        }
    }
    if (!recordingController_ && !controllers_.empty()) {
        recordingController_ = controllers_.front();
    }
    if (recordingController_) {
        recordingController_->startRecording();
    }
}

void PillManager::updateLevel(double level) {
    if (!queue_.isMainThread()) {
        queue_.post([weak = weak_from_this(), level] {
            if (auto self = weak.lock()) {
                self->updateLevel(level);
            }
        });
        return;
    }
    if (recordingController_) {
        recordingController_->updateLevel(MeterAnimation::clampLevel(level));
    }
}

void PillManager::processing() {
    onMain(&PillManager::processingNow);
}

void PillManager::processingNow() {
    collapseWork_.cancel();
    if (recordingController_) {
        recordingController_->setMeter(PillMeterMode::processing);
    }
}

void PillManager::done() {
    onMain(&PillManager::doneNow);
}

void PillManager::doneNow() {
    if (recordingController_) {
        recordingController_->setMeter(PillMeterMode::done);
    }
    scheduleCollapse(PillMetrics::doneCollapseDelay);
}

void PillManager::error() {
    onMain(&PillManager::errorNow);
}

void PillManager::errorNow() {
    if (recordingController_) {
        recordingController_->setMeter(PillMeterMode::error);
    }
    scheduleCollapse(PillMetrics::errorCollapseDelay);
}

void PillManager::scheduleCollapse(double seconds) {
    collapseWork_.cancel();
    collapseWork_ = queue_.after(seconds, [weak = weak_from_this()] {
        if (auto self = weak.lock()) {
            if (self->recordingController_) {
                self->recordingController_->collapseRecording();
            }
            self->recordingController_.reset();
        }
    });
}

void PillManager::finishRecording() {
    onMain(&PillManager::finishRecordingNow);
}

void PillManager::finishRecordingNow() {
    collapseWork_.cancel();
    if (recordingController_) {
        recordingController_->collapseRecording();
    }
    recordingController_.reset();
}

}  // namespace tevra
