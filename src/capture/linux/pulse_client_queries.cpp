// What PulseClient asks the server about its devices and clients, and the
// subscription to their changes.
#include <cstdlib>
#include <cstring>

#include "capture/linux/pulse_client.h"
#include "capture/linux/pulse_loop.h"

namespace tevra {
namespace {

// One query under way: the loop to signal and the answer so far. It lives on
// the caller's stack; Loop::finish cancels a late operation, so no callback
// touches it after the caller has gone.
template <typename Answer>
struct Query {
    PulseClient::Loop* loop;
    Answer answer{};
};

// Asks the server under the loop's lock: start sends the request, whose
// callback fills in the query's answer and signals. None when there is no
// connection or no answer in time.
template <typename Answer, typename Start>
std::optional<Answer> ask(PulseClient::Loop& loop, double timeoutSeconds, Start start) {
    if (!loop.mainloop) {
        return std::nullopt;
    }
    LoopLock lock(loop.mainloop);
    if (!loop.ready()) {
        return std::nullopt;
    }
    Query<Answer> query{&loop};
    if (!loop.finish(start(loop.context, &query), timeoutSeconds)) {
        return std::nullopt;
    }
    return std::move(query.answer);
}

PulseClient::SourceFormat formatOf(const pa_source_info& info) {
    PulseClient::SourceFormat format;
    format.sampleRate = static_cast<int>(info.sample_spec.rate);
    format.channels = info.sample_spec.channels;
    for (int c = 0; c < info.channel_map.channels; ++c) {
        format.channelPositions.push_back(info.channel_map.map[c]);
    }
    return format;
}

int64_t processIdOf(const pa_proplist* properties) {
    const char* pid =
        properties ? pa_proplist_gets(properties, PA_PROP_APPLICATION_PROCESS_ID) : nullptr;
    return pid ? std::strtoll(pid, nullptr, 10) : 0;
}

}  // namespace

bool PulseClient::isConnected() {
    if (!loop_->mainloop) {
        return false;
    }
    LoopLock lock(loop_->mainloop);
    return loop_->ready();
}

void PulseClient::disconnect() {
    if (!loop_->mainloop) {
        return;
    }
    LoopLock lock(loop_->mainloop);
    loop_->closeStream();
    loop_->closeContext();
}

std::optional<PulseClient::ServerDefaults> PulseClient::serverDefaults(double timeoutSeconds) {
    using Answer = std::optional<ServerDefaults>;
    return ask<Answer>(
               *loop_, timeoutSeconds,
               [](pa_context* context, Query<Answer>* query) {
                   return pa_context_get_server_info(
                       context,
                       [](pa_context*, const pa_server_info* info, void* userdata) {
                           auto* q = static_cast<Query<Answer>*>(userdata);
                           if (info) {
                               q->answer = ServerDefaults{
                                   info->default_sink_name ? info->default_sink_name : "",
                                   info->default_source_name ? info->default_source_name : ""};
                           }
                           q->loop->signal();
                       },
                       query);
               })
        .value_or(std::nullopt);
}

std::optional<PulseClient::SourceInfo> PulseClient::sourceInfo(const std::string& name,
                                                               double timeoutSeconds) {
    using Answer = std::optional<SourceInfo>;
    if (name.empty()) {
        return std::nullopt;
    }
    return ask<Answer>(*loop_, timeoutSeconds,
                       [&name](pa_context* context, Query<Answer>* query) {
                           return pa_context_get_source_info_by_name(
                               context, name.c_str(),
                               [](pa_context*, const pa_source_info* info, int, void* userdata) {
                                   auto* q = static_cast<Query<Answer>*>(userdata);
                                   if (info) {
                                       q->answer = SourceInfo{
                                           info->index, info->monitor_of_sink != PA_INVALID_INDEX,
                                           formatOf(*info)};
                                   }
                                   q->loop->signal();
                               },
                               query);
                       })
        .value_or(std::nullopt);
}

std::optional<std::string> PulseClient::monitorOfSink(const std::string& sinkName,
                                                      double timeoutSeconds) {
    using Answer = std::optional<std::string>;
    if (sinkName.empty()) {
        return std::nullopt;
    }
    return ask<Answer>(*loop_, timeoutSeconds,
                       [&sinkName](pa_context* context, Query<Answer>* query) {
                           return pa_context_get_sink_info_by_name(
                               context, sinkName.c_str(),
                               [](pa_context*, const pa_sink_info* info, int, void* userdata) {
                                   auto* q = static_cast<Query<Answer>*>(userdata);
                                   if (info && info->monitor_source_name) {
                                       q->answer = std::string(info->monitor_source_name);
                                   }
                                   q->loop->signal();
                               },
                               query);
                       })
        .value_or(std::nullopt);
}

std::optional<std::vector<PulseClient::RecordStream>> PulseClient::recordStreams(
    double timeoutSeconds) {
    using Answer = std::vector<RecordStream>;
    return ask<Answer>(*loop_, timeoutSeconds, [](pa_context* context, Query<Answer>* query) {
        return pa_context_get_source_output_info_list(
            context,
            [](pa_context*, const pa_source_output_info* info, int, void* userdata) {
                auto* q = static_cast<Query<Answer>*>(userdata);
                if (info) {
                    // Mixers meter every source through streams that resample
                    // to peaks: they listen, but nobody is recording.
                    const bool peaks =
                        info->resample_method && std::strcmp(info->resample_method, "peaks") == 0;
                    q->answer.push_back(RecordStream{info->source, processIdOf(info->proplist),
                                                     info->corked != 0, peaks});
                }
                q->loop->signal();
            },
            query);
    });
}

std::optional<PulseClient::SourceFormat> PulseClient::defaultSourceFormat(double timeoutSeconds) {
    const auto defaults = serverDefaults(timeoutSeconds);
    if (!defaults) {
        return std::nullopt;
    }
    const auto source = sourceInfo(defaults->source, timeoutSeconds);
    if (!source) {
        return std::nullopt;
    }
    return source->format;
}

bool PulseClient::subscribe(unsigned events, std::function<void()> onEvent, double timeoutSeconds) {
    unsigned mask = PA_SUBSCRIPTION_MASK_NULL;
    mask |= (events & sourceOutputEvents) ? PA_SUBSCRIPTION_MASK_SOURCE_OUTPUT : 0;
    mask |= (events & sourceEvents) ? PA_SUBSCRIPTION_MASK_SOURCE : 0;
    mask |= (events & sinkEvents) ? PA_SUBSCRIPTION_MASK_SINK : 0;
    mask |= (events & serverEvents) ? PA_SUBSCRIPTION_MASK_SERVER : 0;
    return ask<bool>(
               *loop_, timeoutSeconds,
               [&](pa_context* context, Query<bool>* query) {
                   Loop& loop = *query->loop;
                   loop.onEvent = std::move(onEvent);
                   pa_context_set_subscribe_callback(
                       context,
                       [](pa_context*, pa_subscription_event_type_t, uint32_t, void* userdata) {
                           auto* l = static_cast<Loop*>(userdata);
                           if (l->onEvent) {
                               try {
                                   l->onEvent();
                               } catch (...) {
                                   // nothing may leave the event thread
                               }
                           }
                       },
                       &loop);
                   return pa_context_subscribe(
                       context, static_cast<pa_subscription_mask_t>(mask),
                       [](pa_context*, int success, void* userdata) {
                           auto* q = static_cast<Query<bool>*>(userdata);
                           q->answer = success != 0;
                           q->loop->signal();
                       },
                       query);
               })
        .value_or(false);
}

}  // namespace tevra
