#pragma once

#include <optional>
#include <string>

#include "capture/microphone_access.h"

namespace tevra {

// The microphone as the sound server (PulseAudio, or PipeWire through
// pipewire-pulse) offers it. There is no permission to ask for: a server that
// answers with a default input source is "authorized", no server or no input
// source is "denied".
class PulseMicrophoneAccess : public MicrophoneAccess {
public:
    // server: as for PulseClient; none for the user's own server.
    explicit PulseMicrophoneAccess(std::optional<std::string> server = {});

    Status status() override;
    // Names the default input source, or says whether the server or the input is missing.
    Check check() override;
    // Answers at once with what status() finds.
    void requestAccess(std::function<void(bool granted)> answer) override;

private:
    std::optional<std::string> server_;
};

}  // namespace tevra
