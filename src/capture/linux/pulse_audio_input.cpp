#include "capture/linux/pulse_audio_input.h"

#include <memory>

#include "capture/audio_error.h"
#include "capture/frame_batcher.h"

namespace tevra {
namespace {

constexpr double kAnswerTimeoutSeconds = 2.0;
constexpr double kStreamTimeoutSeconds = 3.0;
// About 10 ms per fragment: the first words of a dictation arrive at once.
constexpr double kFragmentSeconds = 0.010;

}  // namespace

PulseAudioInput::PulseAudioInput(std::optional<std::string> server)
    : client_("Tevra", std::move(server)) {}

AudioInputFactory PulseAudioInput::factory(std::optional<std::string> server) {
    return [server] { return std::make_unique<PulseAudioInput>(server); };
}

AudioInputFormat PulseAudioInput::format() {
    if (!source_) {
        if (!client_.connect(kAnswerTimeoutSeconds)) {
            return {};
        }
        source_ = client_.defaultSourceFormat(kAnswerTimeoutSeconds);
        if (!source_) {
            return {};
        }
    }
    return {source_->sampleRate, source_->channels};
}

void PulseAudioInput::start(BufferHandler onBuffer) {
    if (format().sampleRate <= 0) {
        throw AudioError(AudioError::Code::noInputDevice);
    }
    const auto channels = static_cast<std::size_t>(source_->channels);
    const auto fragmentFrames = static_cast<std::size_t>(source_->sampleRate * kFragmentSeconds);
    batcher_ = std::make_shared<FrameBatcher>(channels, fragmentFrames, maxBufferFrames,
                                              std::move(onBuffer));
    client_.startRecording(
        *source_, kFragmentSeconds,
        [channels, batcher = batcher_](const void* data, std::size_t bytes) {
            batcher->add(static_cast<const float*>(data), bytes / (sizeof(float) * channels));
        },
        kStreamTimeoutSeconds);
}

void PulseAudioInput::stop() {
    client_.stopRecording();
    // The event thread is done with the batcher; the last few milliseconds
    // still belong to the recording.
    if (batcher_) {
        batcher_->flush();
        batcher_.reset();
    }
}

}  // namespace tevra
