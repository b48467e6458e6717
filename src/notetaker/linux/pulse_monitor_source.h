#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "base/serial_queue.h"
#include "capture/linux/pulse_client.h"
#include "notetaker/system_audio_source.h"

namespace tevra {

// What the system plays: a record stream on the monitor of the sound
// server's default sink, asking the server for 16 kHz mono s16, so that the
// server mixes and converts. When the default sink changes during the call
// (headphones plugged in, another output picked), the stream moves to the
// new one's monitor; it never falls back to a microphone. A monitor hears
// every client, Tevra's own sounds too. All talk with the server happens on
// "tevra.session.monitor".
class PulseMonitorSource : public SystemAudioSource {
public:
    // server: none for the user's own.
    explicit PulseMonitorSource(std::optional<std::string> server = {});
    ~PulseMonitorSource() override;

    static SystemAudioFactory factory(std::optional<std::string> server = {});

    void start(SampleHandler onSamples, NoticeHandler onNotice) override;
    void stop() override;

private:
    void open(const std::string& sink);
    void requestFollow();
    void follow();
    void notice(const std::string& text);

    PulseClient client_;
    SampleHandler onSamples_;
    NoticeHandler onNotice_;
    std::string sink_;  // whose monitor is recorded; empty while none is
    bool stopped_ = false;
    std::atomic<bool> followQueued_{false};
    std::atomic<bool> closing_{false};
    SerialQueue queue_{"tevra.session.monitor"};  // last: it ends first
};

}  // namespace tevra
