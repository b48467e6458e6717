#pragma once

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "base/serial_queue.h"
#include "capture/linux/pulse_client.h"
#include "notetaker/call_signals.h"

namespace tevra {

// The microphone is in use when the sound server's default source is a real
// input (no monitor of a sink) and a record stream of another process, not
// paused and not a mixer's level meter, reads from it. The server is asked
// on a thread of our own, "tevra.calldetector.pulse": whenever it reports a
// change of record streams, sources or its defaults, and at every question,
// so that the answer is never older than one poll even if a report is lost.
class PulseMicrophoneUse : public MicrophoneUse {
public:
    // server: none for the user's own. ownProcess: whose recordings are no use
    // (Tevra's own: a dictation, the notetaker's microphone).
    explicit PulseMicrophoneUse(std::optional<std::string> server = {},
                                int64_t ownProcess = ::getpid());
    ~PulseMicrophoneUse() override;

    // The latest answer; asks the server again in the background.
    bool isDefaultInputHot() override;
    void listen(std::function<void()> onChange) override;
    void stopListening() override;

private:
    void requestRefresh();
    void refresh();
    bool askServer();

    PulseClient client_;
    int64_t ownProcess_;
    std::atomic<bool> hot_{false};
    std::atomic<bool> refreshQueued_{false};
    std::atomic<bool> closing_{false};
    std::mutex listenerMutex_;
    std::function<void()> onChange_;
    SerialQueue queue_{"tevra.calldetector.pulse"};  // last: it ends first
};

}  // namespace tevra
