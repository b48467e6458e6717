#include "notetaker/notetaker_controller.h"

#include "base/log.h"
#include "core/weft_runtime.h"
#include "notetaker/spooled_session.h"
#include "store/history_row.h"

namespace tevra {

std::shared_ptr<NotetakerController> NotetakerController::create(WeftRuntime& runtime,
                                                                 NotetakerServices services) {
    auto controller =
        std::shared_ptr<NotetakerController>(new NotetakerController(runtime, std::move(services)));
    controller->wire();
    return controller;
}

NotetakerController::NotetakerController(WeftRuntime& runtime, NotetakerServices services)
    : runtime_(runtime),
      services_(std::move(services)),
      queue_(*services_.queue),
      detector_(services_.detector),
      autoDetect_(runtime.settings().notetakerAutoDetect) {}

NotetakerController::~NotetakerController() {
    if (graceTask_) {
        graceTask_->cancel();
    }
    detector_->stop();
    // A recording under way stays in its spool folder, finished by the
    // capture's end, and becomes a session at the next start.
}

void NotetakerController::wire() {
    std::weak_ptr<NotetakerController> weak = weak_from_this();
    detector_->onCallStarted = [weak](const std::string& app) {
        if (auto self = weak.lock()) {
            self->handleCallStarted(app);
        }
    };
    detector_->onCallEnded = [weak] {
        if (auto self = weak.lock()) {
            self->handleCallEnded();
        }
    };
    detector_->setEnabled(autoDetect_);
    detector_->start();
    if (services_.notifications) {
        settingsObserver_ = services_.notifications->observe(weftSettingsChanged, [weak] {
            if (auto self = weak.lock()) {
                self->settingsChanged();
            }
        });
    }
}

std::string NotetakerController::microphoneOnlyWarning() {
    return "Recorded your microphone only \u2014 the other side wasn't captured (the sound "
           "server offered no monitor of its output).";
}

double NotetakerController::now() const {
    return services_.clock ? services_.clock() : HistoryRow::currentTimestamp();
}

void NotetakerController::log(const std::string& line) const {
    if (services_.log) {
        services_.log(line);
    } else {
        Log::write(line);
    }
}

void NotetakerController::observe(std::function<void()> observer) {
    observers_.push_back(std::move(observer));
}

void NotetakerController::changed() {
    for (const auto& observer : observers_) {
        observer();
    }
}

void NotetakerController::setState(NotetakerState state) {
    if (state_ != state) {
        state_ = std::move(state);
        changed();
    }
}

void NotetakerController::setWarning(std::optional<std::string> warning) {
    if (lastWarning_ != warning) {
        lastWarning_ = std::move(warning);
        changed();
    }
}

void NotetakerController::setAutoDetect(bool on) {
    autoDetect_ = on;
    detector_->setEnabled(on);
    WeftSettings settings = runtime_.settings();
    settings.notetakerAutoDetect = on;
    settings.save(runtime_.dataDir());
    runtime_.reload();
}

// A hand edit of settings.json turns auto-detection on or off as the page would.
void NotetakerController::settingsChanged() {
    const bool wanted = runtime_.settings().notetakerAutoDetect;
    if (wanted != autoDetect_) {
        autoDetect_ = wanted;
        detector_->setEnabled(wanted);
    }
}

void NotetakerController::handleCallStarted(const std::string& app) {
    // A call that begins while one is recorded or processed is not noticed
    // later: the detector reported it once.
    if (!autoDetect_ || !state_.is(NotetakerState::Kind::idle)) {
        return;
    }
    lastWarning_.reset();
    setState(NotetakerState::detected(app));
    if (graceTask_) {
        graceTask_->cancel();
    }
    std::weak_ptr<NotetakerController> weak = weak_from_this();
    graceTask_ = queue_.after(detectGrace, [weak] {
        auto self = weak.lock();
        if (self && self->state_.is(NotetakerState::Kind::detected)) {
            self->beginCapture(self->state_.app);
        }
    });
}

void NotetakerController::handleCallEnded() {
    switch (state_.kind) {
        case NotetakerState::Kind::recording:
            stop();
            break;
        case NotetakerState::Kind::detected:
            // A call that ended within the grace leaves no trace.
            if (graceTask_) {
                graceTask_->cancel();
                graceTask_.reset();
            }
            setState(NotetakerState::idle());
            break;
        case NotetakerState::Kind::idle:
        case NotetakerState::Kind::processing:
            break;
    }
}

void NotetakerController::startManual(const std::string& appName) {
    if (graceTask_) {
        graceTask_->cancel();
        graceTask_.reset();
    }
    if (state_.is(NotetakerState::Kind::recording) || state_.is(NotetakerState::Kind::processing)) {
        return;
    }
    beginCapture(appName.empty() ? defaultManualName : appName);
}

void NotetakerController::beginCapture(const std::string& app) {
    const double since = now();
    std::optional<SpoolFolder> folder;
    try {
        folder = SessionSpool::create(runtime_.dataDir(), app, since);
        capture_ =
            std::make_shared<SessionCapture>(queue_, services_.devices, *folder, services_.log);
    } catch (const std::exception& e) {
        if (folder) {
            SessionSpool::remove(*folder);
        }
        log("notetaker: cannot record: " + describe(e));
        setWarning("Couldn't record the call: " + describe(e));
        setState(NotetakerState::idle());
        return;
    }
    lastWarning_.reset();
    setState(NotetakerState::recording(app, since));
    log("notetaker: recording " + app + " into " + folder->dir.string());
    std::weak_ptr<NotetakerController> weak = weak_from_this();
    capture_->start([weak](const std::string& message) {
        if (auto self = weak.lock()) {
            self->setWarning(message);
        }
    });
}

void NotetakerController::stop(std::function<void()> done) {
    if (isStopping_) {
        // Concurrent stops collapse into the first; processing ignores them.
        if (done) {
            stopWaiters_.push_back(std::move(done));
        }
        return;
    }
    if (!capture_) {
        if (!state_.is(NotetakerState::Kind::idle)) {
            setState(NotetakerState::idle());
        }
        if (done) {
            done();
        }
        return;
    }
    if (done) {
        stopWaiters_.push_back(std::move(done));
    }
    isStopping_ = true;
    setState(NotetakerState::processing());
    processSession(capture_);
}

NotetakerController::Processing NotetakerController::processing() const {
    // Read here, on the main thread, where the runtime lives.
    Processing job;
    job.services = services_.sessionServices ? services_.sessionServices(runtime_)
                                             : SessionServices::from(runtime_);
    job.clock = [clock = services_.clock] {
        return clock ? clock() : HistoryRow::currentTimestamp();
    };
    job.log = services_.log ? services_.log : [](const std::string& line) { Log::write(line); };
    return job;
}

void NotetakerController::processSession(std::shared_ptr<SessionCapture> capture) {
    std::weak_ptr<NotetakerController> weak = weak_from_this();
    MainQueue& queue = queue_;
    services_.work->run([weak, &queue, capture = std::move(capture), job = processing()]() mutable {
        const SessionCapture::Result result = capture->stop();
        capture.reset();
        queue.post([weak, available = result.systemAudioAvailable] {
            if (auto self = weak.lock()) {
                self->capture_.reset();
                if (!available) {
                    self->setWarning(microphoneOnlyWarning());
                }
            }
        });
        const auto id = SpooledSession::process(job.services, result.spool, job.clock, job.log);
        queue.post([weak, id] {
            if (auto self = weak.lock()) {
                self->finishProcessing(id);
            }
        });
    });
}

void NotetakerController::finishProcessing(std::optional<int64_t> id) {
    if (id) {
        latestSessionID_ = id;
    }
    isStopping_ = false;
    setState(NotetakerState::idle());
    for (auto& waiter : std::exchange(stopWaiters_, {})) {
        waiter();
    }
}

void NotetakerController::recoverSpooledSessions() {
    std::weak_ptr<NotetakerController> weak = weak_from_this();
    MainQueue& queue = queue_;
    for (SpoolFolder& folder : SessionSpool::unsaved(runtime_.dataDir())) {
        if (capture_ && capture_->spool().dir == folder.dir) {
            continue;
        }
        log("notetaker: recovering the recording of " + folder.app + " from " +
            folder.dir.string());
        services_.work->run([weak, &queue, folder = std::move(folder), job = processing()] {
            const auto id = SpooledSession::process(job.services, folder, job.clock, job.log);
            queue.post([weak, id] {
                auto self = weak.lock();
                if (self && id) {
                    self->latestSessionID_ = id;
                    self->changed();
                }
            });
        });
    }
}

}  // namespace tevra
