#pragma once

#include <QRectF>
#include <QWidget>

#include "base/main_queue.h"
#include "pill/hud_meter.h"

namespace tevra {

// The HUD's thirteen bars: steps its meter on a 1/60 s timer of the main queue
// and paints it. The widget reaches beyond the meter's frame by the error
// glow's margins, so that the glow is not clipped.
class MeterView : public QWidget {
public:
    using Mode = HudMeter::Mode;

    explicit MeterView(MainQueue& queue, QWidget* parent = nullptr);
    ~MeterView() override;

    HudMeter& meter() { return meter_; }
    const HudMeter& meter() const { return meter_; }

    // Starts the repeating timer unless it runs already.
    void startAnimating();
    void stopAnimating();
    bool isAnimating() const { return !timer_.isCancelled(); }

    // Places the view so that the meter itself fills frame (parent coordinates).
    void setMeterFrame(const QRectF& frame);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    MainQueue& queue_;
    HudMeter meter_;
    TimerHandle timer_;
};

}  // namespace tevra
