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
    PulseClient client("Tevra", server_);
    if (!client.connect(kAnswerTimeoutSeconds)) {
        return Status::denied;
    }
    const auto source = client.defaultSourceFormat(kAnswerTimeoutSeconds);
    return source && source->channels > 0 ? Status::authorized : Status::denied;
}

void PulseMicrophoneAccess::requestAccess(std::function<void(bool granted)> answer) {
    const bool granted = status() == Status::authorized;
    if (answer) {
        answer(granted);
    }
}

}  // namespace tevra
