#pragma once

#include <cstddef>
#include <cstdint>
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
    // The names the server gives its default output and input; empty where it has none.
    struct ServerDefaults {
        std::string sink;
        std::string source;
    };
    struct SourceInfo {
        uint32_t index = 0;
        bool isMonitor = false;  // the monitor of a sink: what it plays, not a microphone
        SourceFormat format;
    };
    // A record stream (a source output) of any client of the server.
    struct RecordStream {
        uint32_t sourceIndex = 0;
        int64_t processId = 0;   // 0 when the client did not say
        bool corked = false;     // paused: nothing is being recorded
        bool peakMeter = false;  // a level meter of a mixer, not a recording
    };
    enum class SampleType { float32, s16 };
    struct RecordOptions {
        std::string streamName = "Dictation";
        std::optional<std::string> device;  // a source's name; none: the default source
        SampleType sampleType = SampleType::float32;
        // The stream ends with its source instead of moving to another one.
        bool dontMove = false;
        // Called on the event thread when the stream dies after it started.
        std::function<void()> onFailed;
    };
    // Raw bytes of interleaved frames of the sample type asked for, on the event thread.
    using RecordHandler = std::function<void(const void* data, std::size_t bytes)>;
    // Kinds of change a subscriber hears of.
    enum Events : unsigned {
        sourceOutputEvents = 1,
        sourceEvents = 2,
        sinkEvents = 4,
        serverEvents = 8,
    };

    // server: an address such as "unix:/run/user/1000/pulse/native"; none for
    // the user's own server, found the way every client finds it.
    explicit PulseClient(std::string applicationName, std::optional<std::string> server = {});
    // Closes the stream and the connection and ends the event thread.
    ~PulseClient();
    PulseClient(const PulseClient&) = delete;
    PulseClient& operator=(const PulseClient&) = delete;

    // False when no server answers in time. Never starts a server. Connects
    // afresh when the server went away since the last connection.
    bool connect(double timeoutSeconds);
    bool isConnected();
    // Closes the stream and the connection; no callback runs after this returns.
    void disconnect();

    // The sample format of the server's default source; none without one.
    std::optional<SourceFormat> defaultSourceFormat(double timeoutSeconds);
    std::optional<ServerDefaults> serverDefaults(double timeoutSeconds);
    std::optional<SourceInfo> sourceInfo(const std::string& name, double timeoutSeconds);
    // The name of the source that monitors the sink; none when there is no such sink.
    std::optional<std::string> monitorOfSink(const std::string& sinkName, double timeoutSeconds);
    // Every record stream of every client; none when the server does not answer.
    std::optional<std::vector<RecordStream>> recordStreams(double timeoutSeconds);

    // Calls onEvent on the event thread whenever the server reports a change
    // of the given kinds, and when the connection is lost. It runs with the
    // event loop locked: it must not call this client, only hand the news on.
    // Lasts as long as the connection. False when the server refused.
    bool subscribe(unsigned events, std::function<void()> onEvent, double timeoutSeconds);

    // Records frames of format (the default source's unless options name
    // another source), in fragments of about fragmentSeconds. Throws
    // MessageError with the server's reason.
    void startRecording(const SourceFormat& format, double fragmentSeconds, RecordHandler onData,
                        double timeoutSeconds, const RecordOptions& options);
    // The same with the options' defaults: a dictation from the default source.
    void startRecording(const SourceFormat& format, double fragmentSeconds, RecordHandler onData,
                        double timeoutSeconds);
    // Closes the stream and waits until the server has dropped it. No handler
    // call runs after this returns. Safe without a stream.
    void stopRecording();
    // Whether a stream is open and has not died.
    bool isRecording();

    struct Loop;

private:
    std::unique_ptr<Loop> loop_;
};

}  // namespace tevra
