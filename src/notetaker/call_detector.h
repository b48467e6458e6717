#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "notetaker/call_signals.h"

namespace tevra {

// Is the user in a call right now, and in which application? Two signals
// answer it: the microphone is in use by another program, and a call
// application is in front or running (CommsApps). A start must hold for
// startDebounce and an end for endGrace, so that a short use of the
// microphone starts nothing and a short silence ends nothing. It reports
// through two callbacks and knows nothing of recording. Main thread only.
//
// Lives in a std::shared_ptr: its timer and listener hold it weakly.
class CallDetector : public std::enable_shared_from_this<CallDetector> {
public:
    static constexpr double pollInterval = 1.0;
    static constexpr double startDebounce = 2.5;
    static constexpr double endGrace = 6.0;

    using LogLine = std::function<void(const std::string&)>;

    // Once per call, each on the main queue after the evaluation that decided it.
    std::function<void(const std::string& app)> onCallStarted = [](const std::string&) {};
    std::function<void()> onCallEnded = [] {};

    // log: the process log when empty.
    static std::shared_ptr<CallDetector> create(MainQueue& queue,
                                                std::shared_ptr<MicrophoneUse> microphone,
                                                std::shared_ptr<RunningApplications> applications,
                                                LogLine log = {});
    ~CallDetector();
    CallDetector(const CallDetector&) = delete;
    CallDetector& operator=(const CallDetector&) = delete;

    // Off clears the pending dates, but a call already reported stays in
    // progress: neither this nor stop() fires onCallEnded.
    void setEnabled(bool enabled);
    // Installs the listener and the poll timer and evaluates at once. Idempotent.
    void start();
    // Removes both and clears the pending dates. Idempotent.
    void stop();

    // The decision on supplied values: the microphone in use, the frontmost
    // and the running applications' classes, and the time (the main queue's
    // clock). Does nothing while disabled.
    void evaluate(bool micHot, const std::optional<std::string>& frontmost,
                  const std::vector<std::string>& running, double now);

    bool enabled() const { return enabled_; }
    bool isRunning() const { return running_; }
    bool inCall() const { return inCall_; }
    const std::optional<std::string>& currentApp() const { return currentApp_; }
    const std::optional<double>& candidateSince() const { return candidateSince_; }
    const std::optional<double>& coldSince() const { return coldSince_; }

private:
    CallDetector(MainQueue& queue, std::shared_ptr<MicrophoneUse> microphone,
                 std::shared_ptr<RunningApplications> applications, LogLine log);

    // Reads the signals afresh and evaluates them.
    void evaluateNow();
    void log(const std::string& line) const;

    MainQueue& queue_;
    std::shared_ptr<MicrophoneUse> microphone_;
    std::shared_ptr<RunningApplications> applications_;
    LogLine log_;

    bool enabled_ = false;
    bool running_ = false;
    bool inCall_ = false;
    std::optional<std::string> currentApp_;
    std::optional<double> candidateSince_;
    std::optional<double> coldSince_;
    std::optional<TimerHandle> pollTimer_;
};

}  // namespace tevra
