#pragma once

#include <memory>
#include <optional>
#include <string>

#include "capture/audio_input.h"
#include "capture/frame_batcher.h"
#include "capture/linux/pulse_client.h"

namespace tevra {

// The default microphone through the sound server: a record stream of float
// frames at the source's own rate and channel count, so the server does no
// conversion of its own and ours keeps its state across buffers.
class PulseAudioInput final : public AudioInput {
public:
    // server: none for the user's own server (tests name a private one).
    explicit PulseAudioInput(std::optional<std::string> server = {});

    // Inputs for a recorder, one per recording.
    static AudioInputFactory factory(std::optional<std::string> server = {});

    AudioInputFormat format() override;
    void start(BufferHandler onBuffer) override;
    void stop() override;

private:
    PulseClient client_;
    std::optional<PulseClient::SourceFormat> source_;
    std::shared_ptr<FrameBatcher> batcher_;
};

}  // namespace tevra
