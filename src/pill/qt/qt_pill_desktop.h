#pragma once

#include <QObject>
#include <functional>
#include <memory>

#include "base/main_queue.h"
#include "pill/pill_desktop.h"

class QScreen;

namespace tevra {

// The pills' desktop on Qt: every QScreen with its available geometry as the
// visible frame and a key from its name, the primary screen as the main one,
// the cursor, and PillWindows for panels. Main thread only.
class QtPillDesktop : public PillDesktop {
public:
    // compositing: whether a compositor blends windows now; none: never.
    explicit QtPillDesktop(MainQueue& queue, std::function<bool()> compositing = {});
    ~QtPillDesktop() override;

    std::vector<PillScreen> screens() const override;
    std::optional<uint32_t> mainScreen() const override;
    PillPoint mouseLocation() const override;
    std::unique_ptr<PillPanel> makePanel(uint32_t screen, PillController& controller) override;
    void setScreensChanged(std::function<void()> observer) override;

private:
    // Every screen with what the pills know of it. A screen's key comes from
    // its name, told apart from an earlier screen of the same name.
    static std::vector<std::pair<QScreen*, PillScreen>> listed();

    void watch(QScreen* screen);
    // Many signals come with one change of screens: the observer hears them once.
    void changed();

    MainQueue& queue_;
    std::function<bool()> compositing_;
    std::function<void()> observer_;
    QObject context_;
    bool changePending_ = false;
    // Posted work finds out through this whether the desktop is still there.
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tevra
