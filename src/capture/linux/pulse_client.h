#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tevra {

// One connection to the sound server (PulseAudio, or PipeWire through
// pipewire-pulse) with an event thread of its own. Every libpulse call, and
// every lock and wait on that thread, lives in this class; callers see plain
// blocking methods, each with a deadline, so that a server that stops
// answering fails the call instead of hanging the caller. The methods are
// called from one thread at a time.
class PulseClient {
public:
    struct SourceFormat {
        int sampleRate = 0;
        int channels = 0;
        std::vector<int> channelPositions;  // the source's channel map
    };
    // Raw bytes of interleaved float32 frames, on the event thread.
    using RecordHandler = std::function<void(const void* data, std::size_t bytes)>;

    // server: an address such as "unix:/run/user/1000/pulse/native"; none for
    // the user's own server, found the way every client finds it.
    explicit PulseClient(std::string applicationName, std::optional<std::string> server = {});
    // Closes the stream and the connection and ends the event thread.
    ~PulseClient();
    PulseClient(const PulseClient&) = delete;
    PulseClient& operator=(const PulseClient&) = delete;

    // False when no server answers in time. Never starts a server.
    bool connect(double timeoutSeconds);
    // The sample format of the server's default source; none without one.
    std::optional<SourceFormat> defaultSourceFormat(double timeoutSeconds);
    // Records float32 frames of format from the default source, in fragments
    // of about fragmentSeconds. Throws MessageError with the server's reason.
    void startRecording(const SourceFormat& format, double fragmentSeconds, RecordHandler onData,
                        double timeoutSeconds);
    // Closes the stream and waits until the server has dropped it. No handler
    // call runs after this returns. Safe without a stream.
    void stopRecording();

private:
    struct Loop;
    std::unique_ptr<Loop> loop_;
};

}  // namespace tevra
