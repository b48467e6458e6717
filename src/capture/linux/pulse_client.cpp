#include "capture/linux/pulse_client.h"

#include "base/error.h"
#include "capture/linux/pulse_loop.h"

namespace tevra {
namespace {

constexpr double kStopTimeoutSeconds = 2.0;

void onStreamState(pa_stream* stream, void* userdata) {
    auto* loop = static_cast<PulseClient::Loop*>(userdata);
    // A stream that was ready and died (its source went away, the server
    // killed it) is reported; one that never got ready is the caller's to
    // see, as startRecording waits for it, and one we close is no news.
    if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream)) && loop->onStreamFailed) {
        try {
            loop->onStreamFailed();
        } catch (...) {
            // nothing may leave the event thread
        }
    }
    loop->signal();
}

void onStreamRead(pa_stream* stream, std::size_t, void* userdata) {
    auto* loop = static_cast<PulseClient::Loop*>(userdata);
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

}  // namespace

bool PulseClient::Loop::waitUntil(const std::function<bool()>& done, double seconds) {
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

bool PulseClient::Loop::finish(pa_operation* operation, double seconds) {
    if (!operation) {
        return false;
    }
    const bool done = waitUntil(
        [operation] { return pa_operation_get_state(operation) != PA_OPERATION_RUNNING; }, seconds);
    if (!done) {
        pa_operation_cancel(operation);
    }
    pa_operation_unref(operation);
    return done;
}

void PulseClient::Loop::closeStream() {
    if (!stream) {
        return;
    }
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    onStreamFailed = nullptr;
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

void PulseClient::Loop::closeContext() {
    if (!context) {
        return;
    }
    pa_context_set_state_callback(context, nullptr, nullptr);
    pa_context_set_subscribe_callback(context, nullptr, nullptr);
    onEvent = nullptr;
    pa_context_disconnect(context);
    pa_context_unref(context);
    context = nullptr;
}

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
        if (PA_CONTEXT_IS_GOOD(pa_context_get_state(loop.context))) {
            return loop.ready();
        }
        // The server went away since: a fresh connection, perhaps to a new one.
        loop.closeStream();
        loop.closeContext();
    }
    loop.context =
        pa_context_new(pa_threaded_mainloop_get_api(loop.mainloop), loop.applicationName.c_str());
    if (!loop.context) {
        return false;
    }
    pa_context_set_state_callback(
        loop.context,
        [](pa_context* context, void* userdata) {
            auto* l = static_cast<Loop*>(userdata);
            // A subscriber hears of a lost server as of any other change.
            if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)) && l->onEvent) {
                try {
                    l->onEvent();
                } catch (...) {
                    // nothing may leave the event thread
                }
            }
            l->signal();
        },
        &loop);
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
    if (!settled || !loop.ready()) {
        loop.closeContext();
        return false;
    }
    return true;
}

void PulseClient::startRecording(const SourceFormat& format, double fragmentSeconds,
                                 RecordHandler onData, double timeoutSeconds,
                                 const RecordOptions& options) {
    Loop& loop = *loop_;
    if (!loop.mainloop) {
        throw MessageError("cannot record: the audio event loop did not start");
    }
    LoopLock lock(loop.mainloop);
    if (!loop.ready()) {
        throw MessageError("cannot record: not connected to the sound server");
    }
    loop.closeStream();

    pa_sample_spec spec{};
    spec.format = options.sampleType == SampleType::s16 ? PA_SAMPLE_S16LE : PA_SAMPLE_FLOAT32LE;
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

    loop.stream = pa_stream_new(loop.context, options.streamName.c_str(), &spec, &map);
    if (!loop.stream) {
        throw MessageError("cannot record: " + loop.lastError());
    }
    loop.onData = std::move(onData);
    pa_stream_set_state_callback(loop.stream, &onStreamState, &loop);
    pa_stream_set_read_callback(loop.stream, &onStreamRead, &loop);

    // Small fragments: the first syllable reaches us within a few tens of
    // milliseconds instead of waiting for the server's default of seconds.
    pa_buffer_attr attributes{};
    attributes.maxlength = static_cast<uint32_t>(-1);
    attributes.tlength = static_cast<uint32_t>(-1);
    attributes.prebuf = static_cast<uint32_t>(-1);
    attributes.minreq = static_cast<uint32_t>(-1);
    attributes.fragsize = static_cast<uint32_t>(
        pa_usec_to_bytes(static_cast<pa_usec_t>(fragmentSeconds * PA_USEC_PER_SEC), &spec));
    const auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_ADJUST_LATENCY |
                                                      (options.dontMove ? PA_STREAM_DONT_MOVE : 0));
    const char* device = options.device ? options.device->c_str() : nullptr;
    if (pa_stream_connect_record(loop.stream, device, &attributes, flags) < 0) {
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
    // Only now: a stream that fails from here on has died, not failed to start.
    loop.onStreamFailed = options.onFailed;
}

void PulseClient::startRecording(const SourceFormat& format, double fragmentSeconds,
                                 RecordHandler onData, double timeoutSeconds) {
    startRecording(format, fragmentSeconds, std::move(onData), timeoutSeconds, RecordOptions());
}

void PulseClient::stopRecording() {
    if (!loop_->mainloop) {
        return;
    }
    LoopLock lock(loop_->mainloop);
    loop_->closeStream();
}

bool PulseClient::isRecording() {
    if (!loop_->mainloop) {
        return false;
    }
    LoopLock lock(loop_->mainloop);
    return loop_->stream && pa_stream_get_state(loop_->stream) == PA_STREAM_READY;
}

}  // namespace tevra
