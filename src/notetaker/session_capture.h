#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/serial_queue.h"
#include "capture/audio_input.h"
#include "capture/microphone_recorder.h"
#include "notetaker/session_spool.h"
#include "notetaker/spool_file.h"
#include "notetaker/system_audio_source.h"

namespace tevra {

// The platform's side of a session: the microphone and the system's output.
struct SessionDevices {
    AudioInputFactory microphone;
    SystemAudioFactory systemAudio;
};

// Records one call as two separate mono streams at 16 kHz: the microphone
// (the user) through a recorder of its own, and what the system plays (the
// other party). Apart, every word can later be given to its speaker. When the
// system's output cannot be had, the session goes on with the microphone and
// says why, once. Both streams go to the session's spool folder as they come,
// so a call of hours costs no memory and survives a crash.
//
// Threads: the microphone's own, "tevra.session.system" where the system
// source starts and stops, and "tevra.session.spool", which owns both files.
class SessionCapture {
public:
    static constexpr int sampleRate = 16000;

    struct Result {
        SpoolFolder spool;  // both streams there, finished
        int64_t micSamples = 0;
        int64_t systemSamples = 0;
        bool systemAudioAvailable = false;
        double startedAt = 0;  // seconds since the Unix epoch
    };

    using WarningHandler = std::function<void(const std::string& message)>;
    using LogLine = std::function<void(const std::string&)>;

    // Opens both files of the spool folder. Throws MessageError when they
    // cannot be made. log: the process log when empty.
    SessionCapture(MainQueue& queue, SessionDevices devices, SpoolFolder spool, LogLine log = {});
    // Stops whatever still runs and finishes the files.
    ~SessionCapture();
    SessionCapture(const SessionCapture&) = delete;
    SessionCapture& operator=(const SessionCapture&) = delete;

    // Returns at once: the microphone starts, and the system's output is
    // asked for on a thread of its own. onWarning comes on the main queue, at
    // most once.
    void start(WarningHandler onWarning);
    // Stops both streams, waiting for a start under way, and finishes the
    // files. Blocking: call it off the main thread.
    Result stop();

    const SpoolFolder& spool() const { return spool_; }

    // The warnings, in the words the user reads.
    static std::string noOutputWarning();
    static std::string cannotCaptureWarning(const std::string& reason);

    // Float samples to 16-bit: resampled from srcRate to dstRate by picking the
    // nearest earlier sample (none when they differ by less than 1 Hz), each
    // scaled by 32767, truncated and clamped.
    static std::vector<int16_t> toInt16(std::span<const float> samples, double srcRate,
                                        double dstRate);

private:
    void startSystemAudio(const WarningHandler& onWarning);
    void warn(const std::string& message, const WarningHandler& onWarning);
    void stopDevices();
    void log(const std::string& line) const;

    MainQueue& queue_;
    SessionDevices devices_;
    SpoolFolder spool_;
    LogLine log_;
    std::atomic<bool> systemAudioAvailable_{false};
    bool stopped_ = false;

    // Owned by spoolQueue_.
    SpoolWriter micFile_;
    SpoolWriter systemFile_;
    // Owned by systemQueue_.
    std::unique_ptr<SystemAudioSource> system_;
    std::unique_ptr<MicrophoneRecorder> mic_;

    // Last: their threads end, running what is queued, before the rest goes.
    SerialQueue spoolQueue_{"tevra.session.spool"};
    SerialQueue systemQueue_{"tevra.session.system"};
};

}  // namespace tevra
