#include "capture/linux/pulse_client.h"

#include <pulse/pulseaudio.h>

#include "base/error.h"

namespace tevra {
namespace {

constexpr double kStopTimeoutSeconds = 2.0;

// Holds the event loop's lock for a scope. Callbacks of the loop run with it
// held, so whatever is done under it cannot overlap them.
class LoopLock {
public:
    explicit LoopLock(pa_threaded_mainloop* mainloop) : mainloop_(mainloop) {
        pa_threaded_mainloop_lock(mainloop_);
    }
    ~LoopLock() { pa_threaded_mainloop_unlock(mainloop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

private:
    pa_threaded_mainloop* mainloop_;
};

}  // namespace

struct PulseClient::Loop {
    std::string applicationName;
    std::optional<std::string> server;
    pa_threaded_mainloop* mainloop = nullptr;
    pa_context* context = nullptr;
    pa_stream* stream = nullptr;
    RecordHandler onData;

    void signal() { pa_threaded_mainloop_signal(mainloop, 0); }

    // Waits, with the lock held, until done() or the deadline. The lock is
    // released while waiting, so the event thread can make progress.
    bool waitUntil(const std::function<bool()>& done, double seconds) {
        if (done()) {
            return true;
        }
        struct Deadline {
            Loop* loop;
            bool expired = false;
        } deadline{this};
        pa_mainloop_api* api = pa_threaded_mainloop_get_api(mainloop);
        timeval when{};
        pa_gettimeofday(&when);
        pa_timeval_add(&when, static_cast<pa_usec_t>(seconds * PA_USEC_PER_SEC));
        pa_time_event* timer = api->time_new(
            api, &when,
            [](pa_mainloop_api*, pa_time_event*, const timeval*, void* userdata) {
                auto* d = static_cast<Deadline*>(userdata);
                d->expired = true;
                d->loop->signal();
            },
            &deadline);
        while (!done() && !deadline.expired) {
            pa_threaded_mainloop_wait(mainloop);
        }
        api->time_free(timer);
        return done();
    }

    // Waits for an operation whose callback signals; cancels it when late, so
    // that its callback never touches the caller's stack afterwards.
    bool finish(pa_operation* operation, double seconds) {
        if (!operation) {
            return false;
        }
        const bool done = waitUntil(
            [operation] { return pa_operation_get_state(operation) != PA_OPERATION_RUNNING; },
            seconds);
        if (!done) {
            pa_operation_cancel(operation);
        }
        pa_operation_unref(operation);
        return done;
    }

    std::string lastError() const {
        return context ? pa_strerror(pa_context_errno(context)) : "no connection";
    }

    void closeStream() {
        if (!stream) {
            return;
        }
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        if (PA_STREAM_IS_GOOD(pa_stream_get_state(stream))) {
            pa_stream_disconnect(stream);
            // The stream turns TERMINATED when the server confirms it has let go.
            waitUntil([this] { return !PA_STREAM_IS_GOOD(pa_stream_get_state(stream)); },
                      kStopTimeoutSeconds);
        }
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_unref(stream);
        stream = nullptr;
        onData = nullptr;
    }

    void closeContext() {
        if (!context) {
            return;
        }
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
        context = nullptr;
    }

    static void onContextState(pa_context*, void* userdata) {
        static_cast<Loop*>(userdata)->signal();
    }
    static void onStreamState(pa_stream*, void* userdata) {
        static_cast<Loop*>(userdata)->signal();
    }
    static void onStreamRead(pa_stream* stream, std::size_t, void* userdata) {
        auto* loop = static_cast<Loop*>(userdata);
        while (pa_stream_readable_size(stream) > 0) {
            const void* data = nullptr;
            std::size_t bytes = 0;
            if (pa_stream_peek(stream, &data, &bytes) < 0 || bytes == 0) {
                return;
            }
            // A hole (data null) is a gap the server could not fill: skip it.
            if (data && loop->onData) {
                try {
                    loop->onData(data, bytes);
                } catch (...) {
                    // nothing may leave the event thread
                }
            }
            pa_stream_drop(stream);
        }
    }
};

PulseClient::PulseClient(std::string applicationName, std::optional<std::string> server)
    : loop_(std::make_unique<Loop>()) {
    loop_->applicationName = std::move(applicationName);
    loop_->server = std::move(server);
    loop_->mainloop = pa_threaded_mainloop_new();
    if (!loop_->mainloop) {
        return;
    }
    pa_threaded_mainloop_set_name(loop_->mainloop, "tevra.pulse");
    if (pa_threaded_mainloop_start(loop_->mainloop) < 0) {
        pa_threaded_mainloop_free(loop_->mainloop);
        loop_->mainloop = nullptr;
    }
}

PulseClient::~PulseClient() {
    if (!loop_->mainloop) {
        return;
    }
    {
        LoopLock lock(loop_->mainloop);
        loop_->closeStream();
        loop_->closeContext();
    }
    pa_threaded_mainloop_stop(loop_->mainloop);
    pa_threaded_mainloop_free(loop_->mainloop);
}

bool PulseClient::connect(double timeoutSeconds) {
    Loop& loop = *loop_;
    if (!loop.mainloop) {
        return false;
    }
    LoopLock lock(loop.mainloop);
    if (loop.context) {
        return pa_context_get_state(loop.context) == PA_CONTEXT_READY;
    }
    loop.context =
        pa_context_new(pa_threaded_mainloop_get_api(loop.mainloop), loop.applicationName.c_str());
    if (!loop.context) {
        return false;
    }
    pa_context_set_state_callback(loop.context, &Loop::onContextState, &loop);
    // No autospawn: on a desktop the session starts the server; where none
    // runs, the answer is "no input device", not a server of our own.
    const char* server = loop.server ? loop.server->c_str() : nullptr;
    if (pa_context_connect(loop.context, server, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        loop.closeContext();
        return false;
    }
    const bool settled = loop.waitUntil(
        [&loop] {
            const pa_context_state_t state = pa_context_get_state(loop.context);
            return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
        },
        timeoutSeconds);
    if (!settled || pa_context_get_state(loop.context) != PA_CONTEXT_READY) {
        loop.closeContext();
        return false;
    }
    return true;
}

std::optional<PulseClient::SourceFormat> PulseClient::defaultSourceFormat(double timeoutSeconds) {
    Loop& loop = *loop_;
    if (!loop.mainloop) {
        return std::nullopt;
    }
    LoopLock lock(loop.mainloop);
    if (!loop.context || pa_context_get_state(loop.context) != PA_CONTEXT_READY) {
        return std::nullopt;
    }

    struct Query {
        Loop* loop;
        std::string defaultSource;
        std::optional<SourceFormat> format;
    } query{&loop, {}, std::nullopt};

    pa_operation* serverInfo = pa_context_get_server_info(
        loop.context,
        [](pa_context*, const pa_server_info* info, void* userdata) {
            auto* q = static_cast<Query*>(userdata);
            if (info && info->default_source_name) {
                q->defaultSource = info->default_source_name;
            }
            q->loop->signal();
        },
        &query);
    if (!loop.finish(serverInfo, timeoutSeconds) || query.defaultSource.empty()) {
        return std::nullopt;
    }

    pa_operation* sourceInfo = pa_context_get_source_info_by_name(
        loop.context, query.defaultSource.c_str(),
        [](pa_context*, const pa_source_info* info, int, void* userdata) {
            auto* q = static_cast<Query*>(userdata);
            if (info) {
                SourceFormat format;
                format.sampleRate = static_cast<int>(info->sample_spec.rate);
                format.channels = info->sample_spec.channels;
                for (int c = 0; c < info->channel_map.channels; ++c) {
                    format.channelPositions.push_back(info->channel_map.map[c]);
                }
                q->format = std::move(format);
            }
            q->loop->signal();
        },
        &query);
    if (!loop.finish(sourceInfo, timeoutSeconds)) {
        return std::nullopt;
    }
    return query.format;
}

void PulseClient::startRecording(const SourceFormat& format, double fragmentSeconds,
                                 RecordHandler onData, double timeoutSeconds) {
    Loop& loop = *loop_;
    if (!loop.mainloop) {
        throw MessageError("cannot record: the audio event loop did not start");
    }
    LoopLock lock(loop.mainloop);
    if (!loop.context || pa_context_get_state(loop.context) != PA_CONTEXT_READY) {
        throw MessageError("cannot record: not connected to the sound server");
    }
    loop.closeStream();

    pa_sample_spec spec{};
    spec.format = PA_SAMPLE_FLOAT32LE;
    spec.rate = static_cast<uint32_t>(format.sampleRate);
    spec.channels = static_cast<uint8_t>(format.channels);
    if (!pa_sample_spec_valid(&spec)) {
        throw MessageError("cannot record: the source's format is not valid");
    }
    // The source's own channel map, so the server passes frames through as
    // they are instead of remixing them.
    pa_channel_map map{};
    map.channels = spec.channels;
    for (std::size_t c = 0; c < format.channelPositions.size() && c < PA_CHANNELS_MAX; ++c) {
        map.map[c] = static_cast<pa_channel_position_t>(format.channelPositions[c]);
    }
    if (format.channelPositions.size() != spec.channels || !pa_channel_map_valid(&map)) {
        pa_channel_map_init_extend(&map, spec.channels, PA_CHANNEL_MAP_DEFAULT);
    }

    loop.stream = pa_stream_new(loop.context, "Dictation", &spec, &map);
    if (!loop.stream) {
        throw MessageError("cannot record: " + loop.lastError());
    }
    loop.onData = std::move(onData);
    pa_stream_set_state_callback(loop.stream, &Loop::onStreamState, &loop);
    pa_stream_set_read_callback(loop.stream, &Loop::onStreamRead, &loop);

    // Small fragments: the first syllable reaches us within a few tens of
    // milliseconds instead of waiting for the server's default of seconds.
    pa_buffer_attr attributes{};
    attributes.maxlength = static_cast<uint32_t>(-1);
    attributes.tlength = static_cast<uint32_t>(-1);
    attributes.prebuf = static_cast<uint32_t>(-1);
    attributes.minreq = static_cast<uint32_t>(-1);
    attributes.fragsize = static_cast<uint32_t>(
        pa_usec_to_bytes(static_cast<pa_usec_t>(fragmentSeconds * PA_USEC_PER_SEC), &spec));
    if (pa_stream_connect_record(loop.stream, nullptr, &attributes, PA_STREAM_ADJUST_LATENCY) < 0) {
        const std::string reason = loop.lastError();
        loop.closeStream();
        throw MessageError("cannot record: " + reason);
    }
    const bool settled = loop.waitUntil(
        [&loop] {
            const pa_stream_state_t state = pa_stream_get_state(loop.stream);
            return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
        },
        timeoutSeconds);
    if (!settled || pa_stream_get_state(loop.stream) != PA_STREAM_READY) {
        const std::string reason =
            settled ? loop.lastError() : std::string("the sound server did not answer");
        loop.closeStream();
        throw MessageError("cannot record: " + reason);
    }
}

void PulseClient::stopRecording() {
    if (!loop_->mainloop) {
        return;
    }
    LoopLock lock(loop_->mainloop);
    loop_->closeStream();
}

}  // namespace tevra
