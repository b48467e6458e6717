#include "capture/microphone_recorder.h"

#include "base/log.h"
#include "capture/audio_error.h"
#include "capture/audio_level.h"
#include "capture/audio_resampler.h"

namespace tevra {

MicrophoneRecorder::MicrophoneRecorder(MainQueue& mainQueue, AudioInputFactory makeInput,
                                       LogSink log, SampleSink sink)
    : mainQueue_(mainQueue),
      makeInput_(std::move(makeInput)),
      log_(std::move(log)),
      sink_(std::move(sink)) {
    if (!log_) {
        log_ = [](const std::string& line) { Log::write(line); };
    }
}

MicrophoneRecorder::~MicrophoneRecorder() {
    closing_ = true;
    engineQueue_.sync([this] { stopEngine(); });
}

void MicrophoneRecorder::start(LevelHandler onLevel, Completion completion) {
    bufferQueue_.sync([this] { samples_.clear(); });
    streamed_ = 0;
    auto level = std::make_shared<const LevelHandler>(std::move(onLevel));
    engineQueue_.async([this, level, completion = std::move(completion)] {
        if (closing_) {
            return;
        }
        std::exception_ptr failure;
        try {
            startEngine(level);
        } catch (...) {
            failure = std::current_exception();
        }
        if (completion) {
            mainQueue_.post([completion, failure] { completion(failure); });
        }
    });
}

void MicrophoneRecorder::startEngine(const std::shared_ptr<const LevelHandler>& onLevel) {
    std::unique_ptr<AudioInput> input = makeInput_ ? makeInput_() : nullptr;
    const AudioInputFormat format = input ? input->format() : AudioInputFormat{};
    if (format.sampleRate <= 0) {
        throw AudioError(AudioError::Code::noInputDevice);
    }
    if (!AudioResampler::supports(format.sampleRate, format.channels)) {
        throw AudioError(AudioError::Code::cannotConvert);
    }
    // One converter per input, used only on the input's thread: it carries the
    // filter state from each buffer to the next.
    auto resampler = std::make_shared<AudioResampler>(format.sampleRate, format.channels,
                                                      AudioRecorder::sampleRate);
    const int channels = format.channels;
    input->start([this, resampler, onLevel, channels](const float* frames, std::size_t count) {
        // The level goes first, so the meter lags the voice by one buffer at most.
        const float level = meterLevel(frames, count, channels);
        if (*onLevel) {
            mainQueue_.post([onLevel, level] { (*onLevel)(level); });
        }
        std::vector<int16_t> converted;
        resampler->process(frames, count, converted);
        if (converted.empty()) {
            return;
        }
        if (sink_) {
            streamed_ += converted.size();
            sink_(converted);
            return;
        }
        bufferQueue_.sync(
            [&] { samples_.insert(samples_.end(), converted.begin(), converted.end()); });
    });
    engine_ = std::move(input);
    running_ = true;
    log("engine started: " + std::to_string(format.sampleRate) + " Hz, " +
        std::to_string(format.channels) + " ch");
}

AudioRecorder::Samples MicrophoneRecorder::stop() {
    engineQueue_.sync([this] { stopEngine(); });
    Samples copy = bufferQueue_.sync([this] { return samples_; });
    log("recorder.stop: " + std::to_string(sink_ ? streamed_.load() : copy.size()) + " samples");
    return copy;
}

void MicrophoneRecorder::stopEngine() {
    if (engine_) {
        engine_->stop();
        engine_.reset();
    }
    running_ = false;
}

bool MicrophoneRecorder::isRunning() {
    return engineQueue_.sync([this] { return running_; });
}

AudioRecorder::Samples MicrophoneRecorder::snapshot() {
    return bufferQueue_.sync([this] { return samples_; });
}

void MicrophoneRecorder::log(const std::string& line) const {
    log_(line);
}

}  // namespace tevra
