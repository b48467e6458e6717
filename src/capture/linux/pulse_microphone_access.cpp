#include "capture/linux/pulse_microphone_access.h"

#include "capture/linux/pulse_client.h"

namespace tevra {
namespace {

// A local server answers in milliseconds; one that is gone refuses at once.
constexpr double kAnswerTimeoutSeconds = 2.0;

}  // namespace

PulseMicrophoneAccess::PulseMicrophoneAccess(std::optional<std::string> server)
    : server_(std::move(server)) {}

MicrophoneAccess::Status PulseMicrophoneAccess::status() {
    return check().status;
}

MicrophoneAccess::Check PulseMicrophoneAccess::check() {
    PulseClient client("Tevra", server_);
    if (!client.connect(kAnswerTimeoutSeconds)) {
        return {Status::denied,
                {},
                "no sound server answers: start PulseAudio, or PipeWire with pipewire-pulse"};
    }
    const auto source = client.defaultSourceFormat(kAnswerTimeoutSeconds);
    if (!source || source->channels <= 0) {
        return {Status::denied,
                {},
                "the sound server has no input device: plug in a microphone or pick one in "
                "your sound settings"};
    }
    const auto defaults = client.serverDefaults(kAnswerTimeoutSeconds);
    return {Status::authorized, defaults ? defaults->source : std::string(), {}};
}

void PulseMicrophoneAccess::requestAccess(std::function<void(bool granted)> answer) {
    const bool granted = status() == Status::authorized;
    if (answer) {
        answer(granted);
    }
}

}  // namespace tevra
