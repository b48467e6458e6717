#include "notetaker/call_detector.h"

#include "base/log.h"
#include "notetaker/comms_apps.h"

namespace tevra {

std::shared_ptr<CallDetector> CallDetector::create(
    MainQueue& queue, std::shared_ptr<MicrophoneUse> microphone,
    std::shared_ptr<RunningApplications> applications, LogLine log) {
    return std::shared_ptr<CallDetector>(
        new CallDetector(queue, std::move(microphone), std::move(applications), std::move(log)));
}

CallDetector::CallDetector(MainQueue& queue, std::shared_ptr<MicrophoneUse> microphone,
                           std::shared_ptr<RunningApplications> applications, LogLine log)
    : queue_(queue),
      microphone_(std::move(microphone)),
      applications_(std::move(applications)),
      log_(std::move(log)) {}

CallDetector::~CallDetector() {
    if (pollTimer_) {
        pollTimer_->cancel();
    }
    if (running_) {
        microphone_->stopListening();
    }
}

void CallDetector::log(const std::string& line) const {
    if (log_) {
        log_(line);
    } else {
        Log::write(line);
    }
}

void CallDetector::setEnabled(bool enabled) {
    enabled_ = enabled;
    if (!enabled) {
        candidateSince_.reset();
        coldSince_.reset();
    }
    log(std::string("callDetector: autoDetect=") + (enabled ? "true" : "false"));
}

void CallDetector::start() {
    if (running_) {
        return;
    }
    running_ = true;
    std::weak_ptr<CallDetector> weak = weak_from_this();
    MainQueue& queue = queue_;
    // The listener makes a change seen sooner; the poll alone decides correctly.
    microphone_->listen([weak, &queue] {
        queue.post([weak] {
            if (auto self = weak.lock(); self && self->running_) {
                self->evaluateNow();
            }
        });
    });
    pollTimer_ = queue_.every(pollInterval, [weak] {
        if (auto self = weak.lock()) {
            self->evaluateNow();
        }
    });
    evaluateNow();
}

void CallDetector::stop() {
    if (pollTimer_) {
        pollTimer_->cancel();
        pollTimer_.reset();
    }
    if (running_) {
        microphone_->stopListening();
    }
    running_ = false;
    candidateSince_.reset();
    coldSince_.reset();
}

void CallDetector::evaluateNow() {
    if (!enabled_) {
        return;  // the poll costs one comparison while auto-detection is off
    }
    const bool micHot = microphone_->isDefaultInputHot();
    // Without the microphone nothing is a call, whatever runs: the listing of
    // windows is spared.
    if (!micHot) {
        evaluate(false, std::nullopt, {}, queue_.now());
        return;
    }
    evaluate(true, applications_->frontmost(), applications_->running(), queue_.now());
}

void CallDetector::evaluate(bool micHot, const std::optional<std::string>& frontmost,
                            const std::vector<std::string>& running, double now) {
    if (!enabled_) {
        return;
    }
    const std::optional<std::string> app = CommsApps::activeCallApp(frontmost, running, micHot);
    const bool candidate = micHot && app.has_value();
    std::weak_ptr<CallDetector> weak = weak_from_this();
    if (!inCall_) {
        if (!candidate) {
            candidateSince_.reset();
            return;
        }
        if (!candidateSince_) {
            candidateSince_ = now;
        }
        if (now - *candidateSince_ >= startDebounce) {
            inCall_ = true;
            currentApp_ = app;
            candidateSince_.reset();
            coldSince_.reset();
            log("callDetector: START " + *app + " (micHot=true)");
            // Never inside evaluate: the callback runs after it has returned.
            queue_.post([weak, name = *app] {
                if (auto self = weak.lock()) {
                    self->onCallStarted(name);
                }
            });
        }
        return;
    }
    if (candidate) {
        coldSince_.reset();
        return;
    }
    if (!coldSince_) {
        coldSince_ = now;
    }
    if (now - *coldSince_ >= endGrace) {
        inCall_ = false;
        currentApp_.reset();
        coldSince_.reset();
        candidateSince_.reset();
        log("callDetector: END");
        queue_.post([weak] {
            if (auto self = weak.lock()) {
                self->onCallEnded();
            }
        });
    }
}

}  // namespace tevra
