#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/notification_center.h"
#include "base/work_pool.h"
#include "notetaker/call_detector.h"
#include "notetaker/notetaker_state.h"
#include "notetaker/session_capture.h"
#include "notetaker/session_processor.h"

namespace tevra {

class WeftRuntime;

// What the controller works with, made by the program's composition root (or
// by a test, with recording fakes).
struct NotetakerServices {
    MainQueue* queue = nullptr;
    // Where "weft.settingsChanged" is posted; none: hand edits go unnoticed.
    NotificationCenter* notifications = nullptr;
    // Stopping a capture and processing its session, both blocking.
    std::shared_ptr<WorkPool> work;
    std::shared_ptr<CallDetector> detector;
    SessionDevices devices;
    // What processing takes from the runtime, read when a session ends; the
    // runtime's own backends and store when empty.
    std::function<SessionServices(const WeftRuntime&)> sessionServices;
    // Seconds since the Unix epoch; the system clock when empty.
    std::function<double()> clock;
    // The process log when empty.
    std::function<void(const std::string&)> log;
};

// The life of a session: from a detected or requested start, through
// recording, to a NoteSession saved in the store. A session survives
// everything short of a missing store, and even then its recording stays on
// disk. Main thread; the stop and the processing run on the work pool and
// come back here.
//
// Lives in a std::shared_ptr: timers, callbacks and work hold it weakly.
class NotetakerController : public std::enable_shared_from_this<NotetakerController> {
public:
    // From a detected call to its recording, in seconds.
    static constexpr double detectGrace = 1.2;
    // The name of a session started by hand without one.
    static constexpr const char* defaultManualName = "Notes";

    // Starts the detector, which runs for the life of the controller whether
    // auto-detection is on or off.
    static std::shared_ptr<NotetakerController> create(WeftRuntime& runtime,
                                                       NotetakerServices services);
    ~NotetakerController();
    NotetakerController(const NotetakerController&) = delete;
    NotetakerController& operator=(const NotetakerController&) = delete;

    const NotetakerState& state() const { return state_; }
    const std::optional<int64_t>& latestSessionID() const { return latestSessionID_; }
    // What the user should know about the running or the last session.
    const std::optional<std::string>& lastWarning() const { return lastWarning_; }
    bool isStopping() const { return isStopping_; }
    bool autoDetect() const { return autoDetect_; }
    CallDetector& detector() { return *detector_; }

    // Called on the main queue after every change of state or warning.
    void observe(std::function<void()> observer);

    // Records now under appName ("Notes" when empty), taking over from a
    // detected call; nothing while recording or processing.
    void startManual(const std::string& appName);
    // Ends the recording and makes its session; done (if any) runs on the
    // main queue once the controller is back to idle, or at once when there
    // was nothing to stop. Concurrent stops collapse into the first.
    void stop(std::function<void()> done = {});
    // Turns auto-detection on or off and keeps it in the settings; a session
    // in progress goes on.
    void setAutoDetect(bool on);

    // Makes sessions of the spool folders that a Tevra which ended during a
    // call (or before its session was saved) left behind.
    void recoverSpooledSessions();

    // The warning of a session in which the other side was not captured.
    static std::string microphoneOnlyWarning();

private:
    NotetakerController(WeftRuntime& runtime, NotetakerServices services);
    void wire();

    void handleCallStarted(const std::string& app);
    void handleCallEnded();
    void beginCapture(const std::string& app);
    // What making a session takes, read on the main thread for the work pool.
    struct Processing {
        SessionServices services;
        SessionProcessor::Clock clock;
        std::function<void(const std::string&)> log;
    };
    Processing processing() const;
    // Stops the capture on the work pool, then makes its session there.
    void processSession(std::shared_ptr<SessionCapture> capture);
    void finishProcessing(std::optional<int64_t> id);
    void settingsChanged();
    void setState(NotetakerState state);
    void setWarning(std::optional<std::string> warning);
    void changed();
    double now() const;
    void log(const std::string& line) const;

    WeftRuntime& runtime_;
    NotetakerServices services_;
    MainQueue& queue_;
    std::shared_ptr<CallDetector> detector_;

    NotetakerState state_;
    std::optional<int64_t> latestSessionID_;
    std::optional<std::string> lastWarning_;
    std::shared_ptr<SessionCapture> capture_;
    bool autoDetect_ = true;
    std::optional<TimerHandle> graceTask_;
    bool isStopping_ = false;
    std::vector<std::function<void()>> stopWaiters_;
    std::vector<std::function<void()>> observers_;
    NotificationObserver settingsObserver_;
};

}  // namespace tevra
