#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/main_queue.h"
#include "pill/pill_desktop.h"

namespace tevra::testing {

// A panel that only remembers what it was told.
struct FakePillPanel : PillPanel {
    PillRect frameNow;
    PillRect capsule;
    bool visible = false;
    int redraws = 0;

    PillRect frame() const override { return frameNow; }
    void setFrame(const PillRect& frame) override { frameNow = frame; }
    void setCapsule(const PillRect& rect, bool) override { capsule = rect; }
    void orderFront() override { visible = true; }
    void orderOut() override { visible = false; }
    void redraw() override { ++redraws; }
};

// Screens, a main screen and a mouse that the test sets; a change of screens
// reaches the pills on the main queue, as from the window system.
class FakePillDesktop : public PillDesktop {
public:
    explicit FakePillDesktop(MainQueue& queue, std::vector<PillScreen> screens)
        : main(screens.at(0).key), queue_(queue), screens_(std::move(screens)) {}

    std::optional<uint32_t> main;
    PillPoint mouse{-100, -100};

    void setScreens(std::vector<PillScreen> screens) {
        screens_ = std::move(screens);
        queue_.post([this] {
            if (observer_) {
                observer_();
            }
        });
    }

    std::vector<PillScreen> screens() const override { return screens_; }
    std::optional<uint32_t> mainScreen() const override { return main; }
    PillPoint mouseLocation() const override { return mouse; }
    std::unique_ptr<PillPanel> makePanel(uint32_t, PillController&) override {
        return std::make_unique<FakePillPanel>();
    }
    void setScreensChanged(std::function<void()> observer) override {
        observer_ = std::move(observer);
    }

private:
    MainQueue& queue_;
    std::vector<PillScreen> screens_;
    std::function<void()> observer_;
};

}  // namespace tevra::testing
