#include "notetaker/linux/pulse_monitor_source.h"

#include <cstdint>
#include <span>

namespace tevra {
namespace {

constexpr double kAnswerTimeoutSeconds = 2.0;
constexpr double kStreamTimeoutSeconds = 3.0;
// A tenth of a second per fragment: nothing waits for the other side's
// words, and fewer wake-ups cost less.
constexpr double kFragmentSeconds = 0.1;
constexpr int kSampleRate = 16000;

}  // namespace

PulseMonitorSource::PulseMonitorSource(std::optional<std::string> server)
    : client_("Tevra", std::move(server)) {}

PulseMonitorSource::~PulseMonitorSource() {
    closing_ = true;
    queue_.sync([this] {
        stopped_ = true;
        client_.disconnect();
    });
}

SystemAudioFactory PulseMonitorSource::factory(std::optional<std::string> server) {
    return [server] { return std::make_unique<PulseMonitorSource>(server); };
}

void PulseMonitorSource::start(SampleHandler onSamples, NoticeHandler onNotice) {
    queue_.sync([&] {
        onSamples_ = std::move(onSamples);
        onNotice_ = std::move(onNotice);
        if (!client_.connect(kAnswerTimeoutSeconds)) {
            throw MessageError("the sound server does not answer");
        }
        const auto defaults = client_.serverDefaults(kAnswerTimeoutSeconds);
        if (!defaults) {
            throw MessageError("the sound server does not answer");
        }
        if (defaults->sink.empty()) {
            throw NoSoundOutputError();
        }
        client_.subscribe(
            PulseClient::serverEvents | PulseClient::sinkEvents, [this] { requestFollow(); },
            kAnswerTimeoutSeconds);
        open(defaults->sink);
    });
}

void PulseMonitorSource::open(const std::string& sink) {
    const auto monitor = client_.monitorOfSink(sink, kAnswerTimeoutSeconds);
    if (!monitor) {
        throw MessageError("the output " + sink + " has no monitor");
    }
    PulseClient::RecordOptions options;
    options.streamName = "Notes: the other side";
    options.device = *monitor;
    options.sampleType = PulseClient::SampleType::s16;
    // Should the output vanish, the server would move the stream to another
    // source, perhaps the microphone: better that it ends and we follow.
    options.dontMove = true;
    options.onFailed = [this] { requestFollow(); };
    client_.startRecording(
        {kSampleRate, 1, {}}, kFragmentSeconds,
        [this](const void* data, std::size_t bytes) {
            onSamples_(std::span<const int16_t>(static_cast<const int16_t*>(data),
                                                bytes / sizeof(int16_t)));
        },
        kStreamTimeoutSeconds, options);
    sink_ = sink;
}

void PulseMonitorSource::stop() {
    queue_.sync([this] {
        stopped_ = true;
        client_.stopRecording();
    });
}

void PulseMonitorSource::requestFollow() {
    if (closing_ || followQueued_.exchange(true)) {
        return;
    }
    queue_.async([this] {
        followQueued_ = false;
        follow();
    });
}

void PulseMonitorSource::notice(const std::string& text) {
    if (onNotice_) {
        onNotice_(text);
    }
}

// After a report of the server: still the default sink's monitor, and still alive?
void PulseMonitorSource::follow() {
    if (stopped_ || closing_) {
        return;
    }
    const auto defaults = client_.serverDefaults(kAnswerTimeoutSeconds);
    const std::string sink = defaults ? defaults->sink : std::string();
    if (!sink.empty() && sink == sink_ && client_.isRecording()) {
        return;
    }
    client_.stopRecording();
    const bool wasRecording = !sink_.empty();
    sink_.clear();
    if (sink.empty()) {
        if (wasRecording) {
            notice(defaults ? "stopped: no sound output" : "stopped: the sound server went away");
        }
        return;
    }
    try {
        open(sink);
        notice("now from the output " + sink);
    } catch (const std::exception& e) {
        if (wasRecording) {
            notice("stopped: " + describe(e));
        }
    }
}

}  // namespace tevra
