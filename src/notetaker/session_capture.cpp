#include "notetaker/session_capture.h"

#include <algorithm>
#include <cmath>

#include "base/error.h"
#include "base/log.h"

namespace tevra {

SessionCapture::SessionCapture(MainQueue& queue, SessionDevices devices, SpoolFolder spool,
                               LogLine log)
    : queue_(queue),
      devices_(std::move(devices)),
      spool_(std::move(spool)),
      log_(std::move(log)),
      micFile_(spool_.mic(), sampleRate),
      systemFile_(spool_.system(), sampleRate) {
    // The microphone's pieces come on its own thread; the file is written on
    // the spool queue, so the sound server's thread never waits for the disk.
    mic_ = std::make_unique<MicrophoneRecorder>(
        queue_, devices_.microphone, [this](const std::string& line) { this->log(line); },
        [this](std::span<const int16_t> samples) {
            spoolQueue_.async([this, piece = std::vector<int16_t>(samples.begin(), samples.end())] {
                micFile_.append(piece);
            });
        });
}

SessionCapture::~SessionCapture() {
    stopDevices();
    spoolQueue_.sync([this] {
        micFile_.finish();
        systemFile_.finish();
    });
}

void SessionCapture::log(const std::string& line) const {
    if (log_) {
        log_(line);
    } else {
        Log::write(line);
    }
}

std::string SessionCapture::noOutputWarning() {
    return "No sound output to capture the other side from \u2014 mic only.";
}

std::string SessionCapture::cannotCaptureWarning(const std::string& reason) {
    return "Couldn't capture system audio (" + reason + ") \u2014 mic only.";
}

void SessionCapture::start(WarningHandler onWarning) {
    systemAudioAvailable_ = false;
    // Copied, not through this: the completion may come after the capture has gone.
    LogLine logLine = log_ ? log_ : LogLine([](const std::string& line) { Log::write(line); });
    // The microphone runs before anything about the system's output is asked.
    // No level wanted: an empty handler spares the main queue a hundred posts a second.
    mic_->start({}, [logLine](std::exception_ptr error) {
        if (error) {
            logLine("session mic error: " + describe(error));
        }
    });
    systemQueue_.async([this, onWarning = std::move(onWarning)] { startSystemAudio(onWarning); });
}

void SessionCapture::startSystemAudio(const WarningHandler& onWarning) {
    if (stopped_ || !devices_.systemAudio) {
        return;
    }
    try {
        system_ = devices_.systemAudio();
        if (!system_) {
            throw NoSoundOutputError();
        }
        system_->start(
            [this](std::span<const int16_t> samples) {
                spoolQueue_.async(
                    [this, piece = std::vector<int16_t>(samples.begin(), samples.end())] {
                        systemFile_.append(piece);
                    });
            },
            [this](const std::string& notice) { log("session: system audio " + notice); });
        systemAudioAvailable_ = true;
        log("session: system audio capturing");
    } catch (const NoSoundOutputError&) {
        system_.reset();
        warn(noOutputWarning(), onWarning);
    } catch (const std::exception& e) {
        system_.reset();
        warn(cannotCaptureWarning(describe(e)), onWarning);
    }
}

void SessionCapture::warn(const std::string& message, const WarningHandler& onWarning) {
    log("session: " + message);
    if (onWarning) {
        queue_.post([onWarning, message] { onWarning(message); });
    }
}

void SessionCapture::stopDevices() {
    if (mic_) {
        mic_->stop();
        mic_.reset();
    }
    // After a start still under way: nothing is left running behind the stop.
    systemQueue_.sync([this] {
        stopped_ = true;
        if (system_) {
            system_->stop();
            system_.reset();
        }
    });
}

SessionCapture::Result SessionCapture::stop() {
    stopDevices();
    Result result;
    result.spool = spool_;
    result.startedAt = spool_.startedAt;
    result.systemAudioAvailable = systemAudioAvailable_;
    spoolQueue_.sync([&] {
        micFile_.finish();
        systemFile_.finish();
        result.micSamples = micFile_.samples();
        result.systemSamples = systemFile_.samples();
        for (const auto* file : {&micFile_, &systemFile_}) {
            if (file->failure()) {
                log("session: the recording is not complete: " + *file->failure());
            }
        }
    });
    log("session.stop: mic=" + std::to_string(result.micSamples) +
        " system=" + std::to_string(result.systemSamples) + " samples");
    return result;
}

std::vector<int16_t> SessionCapture::toInt16(std::span<const float> samples, double srcRate,
                                             double dstRate) {
    const auto convert = [](float sample) {
        const double scaled = std::trunc(static_cast<double>(sample) * 32767.0);
        return std::isnan(scaled) ? int16_t{0}
                                  : static_cast<int16_t>(std::clamp(scaled, -32768.0, 32767.0));
    };
    std::vector<int16_t> out;
    if (std::abs(srcRate - dstRate) < 1.0) {
        out.reserve(samples.size());
        std::transform(samples.begin(), samples.end(), std::back_inserter(out), convert);
        return out;
    }
    const double ratio = dstRate / srcRate;
    const double count = ratio * static_cast<double>(samples.size());
    if (!(count >= 1.0) || !std::isfinite(count)) {
        return out;
    }
    const auto outCount = static_cast<std::size_t>(count);
    out.reserve(outCount);
    for (std::size_t i = 0; i < outCount; ++i) {
        const auto source =
            std::min(static_cast<std::size_t>(static_cast<double>(i) / ratio), samples.size() - 1);
        out.push_back(convert(samples[source]));
    }
    return out;
}

}  // namespace tevra
