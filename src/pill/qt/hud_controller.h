#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "base/main_queue.h"
#include "pill/hud.h"
#include "pill/hud_meter.h"
#include "pill/pill_geometry.h"

class QWidget;

namespace tevra {

class HudPanel;
class MeterView;

// Owns the HUD panel and its meter. Every operation posts to the main queue
// and returns; the closures it leaves there and on its timers hold it weakly,
// so it must live in a std::shared_ptr (use create()), or its operations do
// nothing. Made and destroyed on the main thread.
class HUDController : public Hud, public std::enable_shared_from_this<HUDController> {
public:
    // The available area (Y down) of the screen the panel shows on; none when
    // there is no screen, and the panel then stays where it was.
    using ScreenArea = std::function<std::optional<PillRect>()>;
    static std::optional<PillRect> primaryScreenArea();

    explicit HUDController(MainQueue& queue, ScreenArea screenArea = primaryScreenArea);
    ~HUDController() override;
    static std::shared_ptr<HUDController> create(MainQueue& queue,
                                                 ScreenArea screenArea = primaryScreenArea);

    void processing() override;
    void done() override;
    void error(const std::string& message) override;
    void hide() override;
    // The meter with the voice. Captures show on the pill; nothing calls these yet.
    void startRecording(const std::string& prefix, const std::string& name);
    void updateLevel(double level);

    QWidget* panel() const;
    MeterView* meter() const { return meter_; }

private:
    void onMain(std::function<void(HUDController&)> action);
    void show(HudMeter::Mode mode);
    void position();
    void shake();
    void autoHide(double seconds);
    void hideNow();

    MainQueue& queue_;
    ScreenArea screenArea_;
    std::unique_ptr<HudPanel> panel_;
    MeterView* meter_;  // a child of the panel
    TimerHandle hideTimer_;
};

}  // namespace tevra
