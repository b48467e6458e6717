#include "capture/wayland/data_control_clipboard.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <thread>

#include "capture/wayland/wlr_interfaces.h"

namespace tevra {

namespace {

using wayland::DataControlDeviceListener;
using wayland::DataControlOfferListener;
using wayland::DataControlSourceListener;

// What a text set by Tevra offers: the types GTK, Qt and XWayland ask for.
const char* const kTextTypes[] = {"text/plain;charset=utf-8", "text/plain", "UTF8_STRING", "STRING",
                                  "TEXT"};
// Preferred first when the clipboard's text is read.
const char* const kReadTextTypes[] = {"text/plain;charset=utf-8", "UTF8_STRING", "text/plain",
                                      "STRING", "TEXT"};

// On a thread of its own: a reader that goes away early must cost an EPIPE,
// not the SIGPIPE that would end the program.
void writeAll(int fd, const std::string& bytes) {
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    std::size_t done = 0;
    while (done < bytes.size()) {
        const auto written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written <= 0) {
            break;
        }
        done += static_cast<std::size_t>(written);
    }
    ::close(fd);
}

std::optional<std::string> readAll(int fd, int timeoutMs) {
    std::string bytes;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    char buffer[65536];
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                              deadline - std::chrono::steady_clock::now())
                              .count();
        pollfd poll = {fd, POLLIN, 0};
        if (left <= 0 || ::poll(&poll, 1, static_cast<int>(left)) <= 0) {
            ::close(fd);
            return std::nullopt;
        }
        const auto got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) {
            ::close(fd);
            return std::nullopt;
        }
        if (got == 0) {
            ::close(fd);
            return bytes;
        }
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
}

}  // namespace

// Touched only on the connection's thread, but for the fields under mutex,
// which the reading thread asks for.
struct DataControlClipboard::State {
    wl_proxy* manager = nullptr;
    wl_proxy* device = nullptr;
    // Offers announced and still describing their types.
    std::map<wl_proxy*, std::vector<std::string>> offers;
    wl_proxy* selection = nullptr;
    // Each source Tevra set, with what it serves.
    std::map<wl_proxy*, std::shared_ptr<const ClipboardItem>> sources;

    std::mutex mutex;
    std::vector<std::string> selectionTypes;
    std::uint64_t generation = 0;
    std::atomic<std::int64_t> changes{0};

    void dropOffer(wl_proxy* offer) {
        offers.erase(offer);
        wl_proxy_marshal_flags(offer, wayland::request::offerDestroy, nullptr,
                               wl_proxy_get_version(offer), WL_MARSHAL_FLAG_DESTROY);
    }
};

namespace {

const DataControlOfferListener kOfferListener = {
    [](void* data, wl_proxy* offer, const char* type) {
        auto* state = static_cast<DataControlClipboard::State*>(data);
        state->offers[offer].push_back(type);
    },
};

void onSelection(DataControlClipboard::State* state, wl_proxy* offer, bool primary) {
    if (primary) {
        // Not kept: only the clipboard is snapshot and restored.
        if (offer != nullptr) {
            state->dropOffer(offer);
        }
        return;
    }
    if (state->selection != nullptr) {
        state->dropOffer(state->selection);
    }
    state->selection = offer;
    {
        std::lock_guard lock(state->mutex);
        state->selectionTypes =
            offer != nullptr ? state->offers[offer] : std::vector<std::string>{};
        ++state->generation;
    }
    ++state->changes;
}

const DataControlDeviceListener kDeviceListener = {
    [](void* data, wl_proxy*, wl_proxy* offer) {
        auto* state = static_cast<DataControlClipboard::State*>(data);
        state->offers[offer];
        wl_proxy_add_listener(offer,
                              reinterpret_cast<void (**)(void)>(
                                  const_cast<DataControlOfferListener*>(&kOfferListener)),
                              state);
    },
    [](void* data, wl_proxy*, wl_proxy* offer) {
        onSelection(static_cast<DataControlClipboard::State*>(data), offer, false);
    },
    [](void* data, wl_proxy* device) {
        // The seat is gone: the device is inert.
        auto* state = static_cast<DataControlClipboard::State*>(data);
        wl_proxy_marshal_flags(device, wayland::request::deviceDestroy, nullptr,
                               wl_proxy_get_version(device), WL_MARSHAL_FLAG_DESTROY);
        state->device = nullptr;
    },
    [](void* data, wl_proxy*, wl_proxy* offer) {
        onSelection(static_cast<DataControlClipboard::State*>(data), offer, true);
    },
};

const DataControlSourceListener kSourceListener = {
    [](void* data, wl_proxy* source, const char* type, std::int32_t fd) {
        auto* state = static_cast<DataControlClipboard::State*>(data);
        const auto found = state->sources.find(source);
        if (found == state->sources.end()) {
            ::close(fd);
            return;
        }
        std::string bytes;
        for (const auto& [format, offered] : found->second->formats) {
            if (format == type) {
                bytes = offered;
                break;
            }
        }
        // A slow reader must not hold up the connection.
        std::thread([fd, bytes = std::move(bytes)] { writeAll(fd, bytes); }).detach();
    },
    [](void* data, wl_proxy* source) {
        auto* state = static_cast<DataControlClipboard::State*>(data);
        state->sources.erase(source);
        wl_proxy_marshal_flags(source, wayland::request::sourceDestroy, nullptr,
                               wl_proxy_get_version(source), WL_MARSHAL_FLAG_DESTROY);
    },
};

template <typename Listener>
void listen(wl_proxy* proxy, const Listener& listener, void* data) {
    wl_proxy_add_listener(
        proxy, reinterpret_cast<void (**)(void)>(const_cast<Listener*>(&listener)), data);
}

}  // namespace

struct DataControlClipboard::Read {
    std::int64_t atChange = 0;
    bool done = false;
    ClipboardSnapshot snapshot;
    std::vector<std::function<void(ClipboardSnapshot)>> waiting;
};

std::shared_ptr<DataControlClipboard> DataControlClipboard::create(
    MainQueue& queue, std::shared_ptr<WaylandConnection> wayland) {
    if (!wayland || wayland->seat() == nullptr ||
        !wayland->offers(wayland::dataControlManager.name)) {
        return nullptr;
    }
    return std::shared_ptr<DataControlClipboard>(
        new DataControlClipboard(queue, std::move(wayland)));
}

DataControlClipboard::DataControlClipboard(MainQueue& queue,
                                           std::shared_ptr<WaylandConnection> wayland)
    : queue_(queue), wayland_(std::move(wayland)), state_(std::make_shared<State>()) {
    wayland_->run([this] {
        State& state = *state_;
        state.manager = wayland_->bind(wayland::dataControlManager, 2);
        state.device = wl_proxy_marshal_flags(
            state.manager, wayland::request::managerGetDataDevice, &wayland::dataControlDevice,
            wl_proxy_get_version(state.manager), 0, nullptr, wayland_->seat());
        listen(state.device, kDeviceListener, &state);
    });
}

DataControlClipboard::~DataControlClipboard() {
    // What Tevra set stays served until the program ends with the connection.
    wayland_->run([state = state_] {
        for (auto& [source, item] : state->sources) {
            wl_proxy_destroy(source);
        }
        state->sources.clear();
        for (auto& [offer, types] : state->offers) {
            wl_proxy_destroy(offer);
        }
        state->offers.clear();
        if (state->device != nullptr) {
            wl_proxy_destroy(state->device);
        }
        if (state->manager != nullptr) {
            wl_proxy_destroy(state->manager);
        }
    });
}

std::optional<std::string> DataControlClipboard::receive(const std::string& type,
                                                         std::uint64_t generation) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    wayland_->post([state = state_, type, generation, writeEnd = fds[1]] {
        bool current = false;
        {
            std::lock_guard lock(state->mutex);
            current = state->generation == generation;
        }
        if (current && state->selection != nullptr) {
            wl_proxy_marshal_flags(state->selection, wayland::request::offerReceive, nullptr,
                                   wl_proxy_get_version(state->selection), 0, type.c_str(),
                                   writeEnd);
        }
        // The request carries its own copy of the descriptor.
        ::close(writeEnd);
    });
    return readAll(fds[0], readTimeoutMs);
}

ClipboardSnapshot DataControlClipboard::snapshot() {
    std::vector<std::string> types;
    std::uint64_t generation = 0;
    {
        std::lock_guard lock(state_->mutex);
        types = state_->selectionTypes;
        generation = state_->generation;
    }
    ClipboardItem item;
    for (const std::string& type : types) {
        if (auto bytes = receive(type, generation)) {
            item.formats.emplace_back(type, std::move(*bytes));
        }
    }
    if (item.formats.empty()) {
        return {};
    }
    return {std::move(item)};
}

std::shared_ptr<DataControlClipboard::Read> DataControlClipboard::startRead() {
    auto read = std::make_shared<Read>();
    read->atChange = changeCount();
    std::weak_ptr<DataControlClipboard> weak = weak_from_this();
    reader_.async([weak, read, &queue = queue_] {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        ClipboardSnapshot snapshot = self->snapshot();
        queue.post([read, snapshot = std::move(snapshot)]() mutable {
            read->done = true;
            read->snapshot = std::move(snapshot);
            for (auto& done : std::exchange(read->waiting, {})) {
                done(read->snapshot);
            }
        });
    });
    return read;
}

void DataControlClipboard::prefetch() {
    if (!read_ || read_->atChange != changeCount()) {
        read_ = startRead();
    }
}

void DataControlClipboard::snapshotLater(std::function<void(ClipboardSnapshot)> done) {
    // What was read ahead serves only if the clipboard has not changed since.
    prefetch();
    if (read_->done) {
        done(read_->snapshot);
    } else {
        read_->waiting.push_back(std::move(done));
    }
}

void DataControlClipboard::setSelection(ClipboardItem item, bool primary) {
    auto served = std::make_shared<const ClipboardItem>(std::move(item));
    wayland_->post([state = state_, served, primary] {
        if (state->device == nullptr) {
            return;
        }
        if (primary && wl_proxy_get_version(state->device) < 2) {
            return;
        }
        wl_proxy* source = nullptr;
        if (!served->formats.empty()) {
            source = wl_proxy_marshal_flags(
                state->manager, wayland::request::managerCreateDataSource,
                &wayland::dataControlSource, wl_proxy_get_version(state->manager), 0, nullptr);
            listen(source, kSourceListener, state.get());
            for (const auto& [type, bytes] : served->formats) {
                wl_proxy_marshal_flags(source, wayland::request::sourceOffer, nullptr,
                                       wl_proxy_get_version(source), 0, type.c_str());
            }
            state->sources[source] = served;
        }
        wl_proxy_marshal_flags(state->device, primary ? 2u : wayland::request::deviceSetSelection,
                               nullptr, wl_proxy_get_version(state->device), 0, source);
    });
}

void DataControlClipboard::setText(std::string_view text, bool transient) {
    ClipboardItem item;
    for (const char* type : kTextTypes) {
        item.formats.emplace_back(type, std::string(text));
    }
    if (transient) {
        // Clipboard managers leave out what carries this hint.
        item.formats.emplace_back("x-kde-passwordManagerHint", "secret");
    }
    setSelection(std::move(item), false);
}

void DataControlClipboard::setPrimaryText(std::string_view text) {
    ClipboardItem item;
    for (const char* type : kTextTypes) {
        item.formats.emplace_back(type, std::string(text));
    }
    setSelection(std::move(item), true);
}

void DataControlClipboard::restore(const ClipboardSnapshot& snapshot) {
    setSelection(snapshot.empty() ? ClipboardItem{} : snapshot.front(), false);
}

std::optional<std::string> DataControlClipboard::text() {
    std::vector<std::string> types;
    std::uint64_t generation = 0;
    {
        std::lock_guard lock(state_->mutex);
        types = state_->selectionTypes;
        generation = state_->generation;
    }
    for (const char* wanted : kReadTextTypes) {
        for (const std::string& type : types) {
            if (type == wanted) {
                auto bytes = receive(type, generation);
                if (!bytes) {
                    return std::nullopt;
                }
                std::string lines;
                for (std::size_t i = 0; i < bytes->size(); ++i) {
                    if ((*bytes)[i] == '\r' && i + 1 < bytes->size() && (*bytes)[i + 1] == '\n') {
                        continue;
                    }
                    lines += (*bytes)[i];
                }
                return lines;
            }
        }
    }
    return std::nullopt;
}

std::int64_t DataControlClipboard::changeCount() {
    return state_->changes;
}

}  // namespace tevra
