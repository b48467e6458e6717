#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/main_queue.h"
#include "base/notification_center.h"
#include "pill/meter_engine.h"
#include "pill/pill_desktop.h"
#include "pill/pill_layout.h"
#include "pill/pill_state.h"

namespace tevra {

class WeftRuntime;

// A look at the pill without a capture: "TEVRA_PILL_PHASE" names a phase
// that every pill takes shortly after it is made, and "TEVRA_PILL_METER" the
// meter's mode when that phase is recording.
struct PillPreview {
    PillPhase phase = PillPhase::idle;
    PillMeterMode meterMode = PillMeterMode::recording;

    // None unless TEVRA_PILL_PHASE names a phase.
    static std::optional<PillPreview> fromEnvironment();
};

// Everything the pills share.
struct PillContext {
    MainQueue& queue;
    PillDesktop& desktop;
    PillLayout& layout;
    WeftRuntime& runtime;
    NotificationCenter* notifications = nullptr;
    std::function<void(const std::string& text)> onPaste;
    std::optional<PillPreview> preview;
};

// One screen's pill: its panel, its state, the meter, and the mouse tracker
// that opens and closes its cards. The tracker and the meter's frame clock
// run only while there is something to follow: a card open, the mouse near
// the pill, a meter on the screen; a resting pill has no timer. Lives in a
// std::shared_ptr (use create()): its timers hold it weakly. Main thread only.
class PillController : public std::enable_shared_from_this<PillController> {
public:
    static std::shared_ptr<PillController> create(const PillContext& context, uint32_t screen);
    ~PillController();
    PillController(const PillController&) = delete;
    PillController& operator=(const PillController&) = delete;

    uint32_t displayID() const { return displayID_; }
    PillState& state() { return state_; }
    const PillState& state() const { return state_; }
    const MeterEngine& meter() const { return meter_; }
    PillPanel& panel() { return *panel_; }
    PillPlace place() const { return {state_.dock(), center_}; }
    bool isDragging() const { return isDragging_; }
    bool isTracking() const { return !tracker_.isCancelled(); }
    bool isAnimatingMeter() const { return !meterClock_.isCancelled(); }

    // On the screen, the tracker looking once whether the mouse is near.
    void show();
    // Off the screen, every timer stopped.
    void hide();
    void reload() { state_.reload(); }

    void startRecording();
    void updateLevel(double level);
    // Only while the pill shows a capture.
    void setMeter(PillMeterMode mode);
    void collapseRecording();

    // The panel takes the size of the phase on its edge: at once when it grows,
    // 0.34 s later when it shrinks, its capsule gliding meanwhile.
    void applyGeometry();
    // One look of the mouse tracker.
    void tick();

    // The view's: the mouse came over the panel.
    void pointerEntered();
    // The view's: a click on a history row pastes it 0.45 s later and closes the card.
    void repaste(const HistoryRow& row);

private:
    PillController(const PillContext& context, uint32_t screen);
    void start();
    std::optional<PillScreen> screen() const;
    std::optional<PillRect> frameFor(PillSize size) const;
    void phaseChanged();
    void startTracker();
    void collapseAfter(double delay);
    void updateMeterClock();
    void drag(bool first);
    void moveEnd();
    void glide(const PillRect& from, const PillRect& to);
    void startPreview(const PillPreview& preview);

    MainQueue& queue_;
    PillDesktop& desktop_;
    PillLayout& layout_;
    std::optional<PillPreview> preview_;
    uint32_t displayID_;
    PillState state_;
    MeterEngine meter_;
    std::unique_ptr<PillPanel> panel_;
    bool shown_ = false;
    TimerHandle tracker_;
    std::optional<double> outsideSince_;
    TimerHandle shrinkWork_;
    TimerHandle meterClock_;
    TimerHandle previewLevelTimer_;
    TimerHandle glideTimer_;
    bool isDragging_ = false;
    PillPoint grabOffset_;
    PillPoint center_;
};

}  // namespace tevra
