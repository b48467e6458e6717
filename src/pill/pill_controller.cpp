#include "pill/pill_controller.h"

#include <cmath>
#include <cstdlib>

#include "pill/pill_metrics.h"

namespace tevra {

std::optional<PillPreview> PillPreview::fromEnvironment() {
    const char* phase = std::getenv("TEVRA_PILL_PHASE");
    const auto parsed = pillPhaseFromRaw(phase ? phase : "");
    if (!parsed) {
        return std::nullopt;
    }
    const char* meter = std::getenv("TEVRA_PILL_METER");
    return PillPreview{*parsed,
                       pillMeterModeFromRaw(meter ? meter : "").value_or(PillMeterMode::recording)};
}

PillController::PillController(const PillContext& context, uint32_t screen)
    : queue_(context.queue),
      desktop_(context.desktop),
      layout_(context.layout),
      preview_(context.preview),
      displayID_(screen),
      state_(context.runtime, context.notifications) {
    state_.onPaste = context.onPaste;
}

std::shared_ptr<PillController> PillController::create(const PillContext& context,
                                                       uint32_t screen) {
    std::shared_ptr<PillController> controller(new PillController(context, screen));
    controller->start();
    return controller;
}

void PillController::start() {
    const std::optional<PillScreen> home = screen();
    const PillSize visible =
        home ? PillSize{home->visibleFrame.width, home->visibleFrame.height} : PillSize{};
    const PillPlace place = PillPlacement::initial(layout_.spot(displayID_), visible);
    state_.setDock(place.dock);
    center_ = place.center;

    panel_ = desktop_.makePanel(displayID_, *this);
    std::weak_ptr<PillController> weak = weak_from_this();
    auto later = [weak](void (PillController::*operation)()) {
        return [weak, operation] {
            if (auto self = weak.lock()) {
                ((*self).*operation)();
            }
        };
    };
    state_.onPhaseChange = later(&PillController::phaseChanged);
    state_.onMoveEnd = later(&PillController::moveEnd);
    state_.onDrag = [weak](bool first) {
        if (auto self = weak.lock()) {
            self->drag(first);
        }
    };
    state_.onChange = [weak] {
        if (auto self = weak.lock()) {
            self->panel_->redraw();
        }
    };
    applyGeometry();
    if (preview_) {
        startPreview(*preview_);
    }
}

PillController::~PillController() {
    for (TimerHandle* timer :
         {&tracker_, &shrinkWork_, &meterClock_, &previewLevelTimer_, &glideTimer_}) {
        timer->cancel();
    }
    state_.onChange = nullptr;
    if (panel_) {
        panel_->orderOut();
    }
}

std::optional<PillScreen> PillController::screen() const {
    for (const PillScreen& screen : desktop_.screens()) {
        if (screen.key == displayID_) {
            return screen;
        }
    }
    return std::nullopt;
}

std::optional<PillRect> PillController::frameFor(PillSize size) const {
    const auto home = screen();
    if (!home) {
        return std::nullopt;
    }
    return PillPlacement::frameFor(size, place(), home->visibleFrame);
}

void PillController::applyGeometry() {
    shrinkWork_.cancel();
    const PillSize size = PillMetrics::panelSize(state_.phase(), state_.dock());
    const PillRect present = panel_->frame();
    auto resize = [this, size] {
        const PillRect now = panel_->frame();
        const PillRect target =
            frameFor(size).value_or(PillRect{now.x, now.y, size.width, size.height});
        panel_->setFrame(target);
        panel_->setCapsule(target, /*animated=*/true);
    };
    if (present.width <= size.width && present.height <= size.height) {
        resize();
        return;
    }
    // The capsule shrinks inside the panel first, and the panel follows.
    if (const auto target = frameFor(size)) {
        panel_->setCapsule(*target, /*animated=*/true);
    }
    std::weak_ptr<PillController> weak = weak_from_this();
    shrinkWork_ = queue_.after(PillMetrics::shrinkDelay, [weak, resize] {
        if (auto self = weak.lock()) {
            resize();
        }
    });
}

void PillController::show() {
    shown_ = true;
    applyGeometry();
    panel_->orderFront();
    startTracker();
    updateMeterClock();
}

void PillController::hide() {
    shown_ = false;
    tracker_.cancel();
    updateMeterClock();
    panel_->orderOut();
}

void PillController::phaseChanged() {
    applyGeometry();
    updateMeterClock();
    if (shown_) {
        // A card that opened must close again; a pill that came back to rest
        // under the mouse opens.
        startTracker();
    }
}

void PillController::startRecording() {
    state_.setMeterMode(PillMeterMode::recording);
    state_.setLevel(0);
    state_.setPhase(PillPhase::recording);
}

void PillController::updateLevel(double level) {
    state_.setLevel(MeterAnimation::clampLevel(level));
}

void PillController::setMeter(PillMeterMode mode) {
    if (state_.phase() == PillPhase::recording) {
        state_.setMeterMode(mode);
    }
}

void PillController::collapseRecording() {
    if (state_.phase() == PillPhase::recording) {
        state_.setPhase(PillPhase::idle);
    }
}

void PillController::updateMeterClock() {
    const bool wanted = shown_ && state_.phase() == PillPhase::recording;
    if (!wanted) {
        meterClock_.cancel();
        return;
    }
    if (isAnimatingMeter()) {
        return;
    }
    std::weak_ptr<PillController> weak = weak_from_this();
    meterClock_ = queue_.every(PillMetrics::meterFrameInterval, [weak] {
        if (auto self = weak.lock()) {
            self->meter_.step(self->queue_.now(), self->state_.meterMode(), self->state_.level());
            self->panel_->redraw();
        }
    });
}

void PillController::pointerEntered() {
    if (shown_) {
        startTracker();
    }
}

void PillController::startTracker() {
    if (isTracking()) {
        return;
    }
    std::weak_ptr<PillController> weak = weak_from_this();
    tracker_ = queue_.every(PillMetrics::trackerInterval, [weak] {
        if (auto self = weak.lock()) {
            self->tick();
        }
    });
}

void PillController::tick() {
    if (isDragging_) {
        return;
    }
    const PillPhase phase = state_.phase();
    if (phase == PillPhase::recording) {
        outsideSince_.reset();
    }
    const PillRect frame = panel_->frame();
    const PillPoint mouse = desktop_.mouseLocation();
    const double slop = PillMetrics::hoverSlop;
    const bool inside = mouse.x >= frame.x - slop && mouse.x <= frame.x + frame.width + slop &&
                        mouse.y >= frame.y - slop && mouse.y <= frame.bottom() + slop;
    switch (phase) {
        case PillPhase::idle:
            if (inside) {
                outsideSince_.reset();
                state_.setPhase(PillPhase::peek);
                return;
            }
            break;
        case PillPhase::peek:
        case PillPhase::full:
            if (inside) {
                outsideSince_.reset();
            } else {
                collapseAfter(phase == PillPhase::peek ? PillMetrics::peekCollapseDelay
                                                       : PillMetrics::fullCollapseDelay);
            }
            return;
        case PillPhase::recording:
            break;
    }
    // Nothing to follow until the mouse comes back over the panel.
    if (!inside && (state_.phase() == PillPhase::idle || state_.phase() == PillPhase::recording)) {
        tracker_.cancel();
    }
}

void PillController::collapseAfter(double delay) {
    const double now = queue_.now();
    if (!outsideSince_) {
        outsideSince_ = now;
    } else if (now - *outsideSince_ >= delay) {
        outsideSince_.reset();
        state_.setPhase(PillPhase::idle);
    }
}

void PillController::repaste(const HistoryRow& row) {
    if (state_.pastingRow()) {
        return;
    }
    state_.setPastingRow(row.id);
    std::weak_ptr<PillController> weak = weak_from_this();
    queue_.after(PillMetrics::repasteDelay, [weak, text = row.polished] {
        if (auto self = weak.lock()) {
            if (self->state_.onPaste) {
                self->state_.onPaste(text);
            }
            self->state_.setPhase(PillPhase::idle);
            self->state_.setPastingRow(std::nullopt);
        }
    });
}

void PillController::startPreview(const PillPreview& preview) {
    std::weak_ptr<PillController> weak = weak_from_this();
    queue_.after(PillMetrics::previewDelay, [weak, preview] {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        if (preview.phase == PillPhase::recording) {
            self->state_.setMeterMode(preview.meterMode);
            auto counter = std::make_shared<double>(0);
            self->previewLevelTimer_ =
                self->queue_.every(PillMetrics::previewLevelInterval, [weak, counter] {
                    if (auto pill = weak.lock()) {
                        *counter += 0.12;
                        pill->state_.setLevel((std::sin(*counter) * 0.5 + 0.5) * 0.4 + 0.45);
                    }
                });
        }
        self->state_.setPhase(preview.phase);
    });
}

}  // namespace tevra
