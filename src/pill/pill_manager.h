#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/notification_center.h"
#include "pill/pill.h"
#include "pill/pill_controller.h"
#include "pill/pill_desktop.h"
#include "pill/pill_layout.h"

namespace tevra {

class WeftRuntime;

// One pill per screen, made again whenever the screens change, and the
// single door through which the orchestrator reaches them. Only the main
// screen's pill shows a capture. Lives in a std::shared_ptr (use create()):
// its timers and the desktop's observer hold it weakly. Made and destroyed on
// the main thread; the operations of Pill may come from any thread.
class PillManager : public Pill, public std::enable_shared_from_this<PillManager> {
public:
    using OnPaste = std::function<void(const std::string& text)>;

    static std::shared_ptr<PillManager> create(MainQueue& queue, WeftRuntime& runtime,
                                               NotificationCenter* notifications,
                                               std::shared_ptr<PillDesktop> desktop,
                                               OnPaste onPaste,
                                               std::optional<PillPreview> preview = {});
    ~PillManager() override;
    PillManager(const PillManager&) = delete;
    PillManager& operator=(const PillManager&) = delete;

    void show() override;
    void hide();
    void reload() override;
    void startRecording() override;
    void updateLevel(double level) override;
    void processing() override;
    void done() override;
    void error() override;
    void finishRecording() override;

    const std::vector<std::shared_ptr<PillController>>& controllers() const { return controllers_; }
    // The pill that shows the capture, which may be one of an earlier set of screens.
    const std::shared_ptr<PillController>& recordingController() const {
        return recordingController_;
    }
    bool isVisible() const { return visible_; }
    PillLayout& layout() { return layout_; }

private:
    PillManager(MainQueue& queue, WeftRuntime& runtime, NotificationCenter* notifications,
                std::shared_ptr<PillDesktop> desktop, OnPaste onPaste,
                std::optional<PillPreview> preview);
    // Runs the operation now on the main thread, else there soon after.
    void onMain(void (PillManager::*operation)());
    void rebuild();
    void scheduleCollapse(double seconds);
    void showNow();
    void hideNow();
    void reloadNow();
    void startRecordingNow();
    void processingNow();
    void doneNow();
    void errorNow();
    void finishRecordingNow();

    MainQueue& queue_;
    WeftRuntime& runtime_;
    NotificationCenter* notifications_;
    std::shared_ptr<PillDesktop> desktop_;
    OnPaste onPaste_;
    std::optional<PillPreview> preview_;
    PillLayout layout_;
    std::vector<std::shared_ptr<PillController>> controllers_;
    bool visible_ = false;
    TimerHandle collapseWork_;
    std::shared_ptr<PillController> recordingController_;
};

}  // namespace tevra
