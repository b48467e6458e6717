#include "notetaker/linux/pulse_microphone_use.h"

#include <algorithm>

namespace tevra {
namespace {

// A local server answers in milliseconds; one that is gone refuses at once.
constexpr double kAnswerTimeoutSeconds = 2.0;

}  // namespace

PulseMicrophoneUse::PulseMicrophoneUse(std::optional<std::string> server, int64_t ownProcess)
    : client_("Tevra", std::move(server)), ownProcess_(ownProcess) {}

PulseMicrophoneUse::~PulseMicrophoneUse() {
    closing_ = true;
    stopListening();
    // After a question under way; no server callback comes after this, and
    // what is still queued returns at once.
    queue_.sync([this] { client_.disconnect(); });
}

bool PulseMicrophoneUse::isDefaultInputHot() {
    requestRefresh();
    return hot_;
}

void PulseMicrophoneUse::listen(std::function<void()> onChange) {
    {
        std::lock_guard lock(listenerMutex_);
        onChange_ = std::move(onChange);
    }
    requestRefresh();
}

void PulseMicrophoneUse::stopListening() {
    std::lock_guard lock(listenerMutex_);
    onChange_ = nullptr;
}

// Reports of the server come in bursts (a stream opens: a new stream, a
// changed source); one question answers them all.
void PulseMicrophoneUse::requestRefresh() {
    if (closing_ || refreshQueued_.exchange(true)) {
        return;
    }
    queue_.async([this] {
        refreshQueued_ = false;
        if (!closing_) {
            refresh();
        }
    });
}

void PulseMicrophoneUse::refresh() {
    const bool hot = askServer();
    if (hot_.exchange(hot) != hot) {
        std::lock_guard lock(listenerMutex_);
        if (onChange_) {
            onChange_();
        }
    }
}

bool PulseMicrophoneUse::askServer() {
    if (!client_.isConnected()) {
        if (!client_.connect(kAnswerTimeoutSeconds)) {
            return false;
        }
        client_.subscribe(
            PulseClient::sourceOutputEvents | PulseClient::sourceEvents | PulseClient::serverEvents,
            [this] { requestRefresh(); }, kAnswerTimeoutSeconds);
    }
    const auto defaults = client_.serverDefaults(kAnswerTimeoutSeconds);
    if (!defaults) {
        return false;
    }
    const auto source = client_.sourceInfo(defaults->source, kAnswerTimeoutSeconds);
    if (!source || source->isMonitor) {
        return false;
    }
    const auto streams = client_.recordStreams(kAnswerTimeoutSeconds);
    return streams && std::any_of(streams->begin(), streams->end(),
                                  [&](const PulseClient::RecordStream& stream) {
                                      return stream.sourceIndex == source->index &&
                                             stream.processId != ownProcess_ && !stream.corked &&
                                             !stream.peakMeter;
                                  });
}

}  // namespace tevra
