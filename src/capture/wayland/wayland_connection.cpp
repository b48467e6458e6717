#include "capture/wayland/wayland_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <future>

namespace tevra {

std::shared_ptr<WaylandConnection> WaylandConnection::open(const std::string& socket) {
    wl_display* display = wl_display_connect(socket.empty() ? nullptr : socket.c_str());
    if (display == nullptr) {
        return nullptr;
    }
    return std::shared_ptr<WaylandConnection>(new WaylandConnection(display));
}

WaylandConnection::WaylandConnection(wl_display* display) : display_(display) {
    static const wl_registry_listener registryListener = {onGlobal, onGlobalRemove};
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &registryListener, this);
    wl_display_roundtrip(display_);

    // The seat's keyboard tells its keymap, which the virtual keyboard reuses
    // so that the user's layout stays as it is.
    seat_ = reinterpret_cast<wl_seat*>(bind(wl_seat_interface, 5));
    if (seat_ != nullptr) {
        static const wl_seat_listener seatListener = {onSeatCapabilities, onSeatName};
        wl_seat_add_listener(seat_, &seatListener, this);
        wl_display_roundtrip(display_);
        wl_display_roundtrip(display_);
    }
    if (::pipe2(wake_, O_CLOEXEC | O_NONBLOCK) != 0) {
        wake_[0] = wake_[1] = -1;
    }
    thread_ = std::thread([this] { loop(); });
}

WaylandConnection::~WaylandConnection() {
    stopping_ = true;
    post([] {});
    thread_.join();
    if (keyboard_ != nullptr) {
        wl_keyboard_destroy(keyboard_);
    }
    if (seat_ != nullptr) {
        wl_seat_destroy(seat_);
    }
    wl_registry_destroy(registry_);
    wl_display_disconnect(display_);
    ::close(wake_[0]);
    ::close(wake_[1]);
}

void WaylandConnection::onGlobal(void* data, wl_registry*, std::uint32_t name,
                                 const char* interface, std::uint32_t version) {
    auto* self = static_cast<WaylandConnection*>(data);
    std::lock_guard lock(self->mutex_);
    self->globals_.emplace(interface, Global{name, version});
}

void WaylandConnection::onSeatCapabilities(void* data, wl_seat* seat, std::uint32_t capabilities) {
    auto* self = static_cast<WaylandConnection*>(data);
    if ((capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0 && self->keyboard_ == nullptr) {
        static const wl_keyboard_listener keyboardListener = {
            onKeymap,
            [](void*, wl_keyboard*, std::uint32_t, wl_surface*, wl_array*) {},
            [](void*, wl_keyboard*, std::uint32_t, wl_surface*) {},
            [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {},
            [](void*, wl_keyboard*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
               std::uint32_t) {},
            [](void*, wl_keyboard*, std::int32_t, std::int32_t) {},
        };
        self->keyboard_ = wl_seat_get_keyboard(seat);
        wl_keyboard_add_listener(self->keyboard_, &keyboardListener, self);
    }
}

void WaylandConnection::onKeymap(void* data, wl_keyboard*, std::uint32_t format, std::int32_t fd,
                                 std::uint32_t size) {
    auto* self = static_cast<WaylandConnection*>(data);
    if (format == WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1 && size > 1) {
        void* map = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (map != MAP_FAILED) {
            // The text ends with its NUL.
            std::string text(static_cast<const char*>(map), size - 1);
            ::munmap(map, size);
            std::lock_guard lock(self->mutex_);
            self->keymap_ = std::move(text);
        }
    }
    ::close(fd);
}

std::vector<std::string> WaylandConnection::globals() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [name, global] : globals_) {
        names.push_back(name);
    }
    return names;
}

bool WaylandConnection::offers(const std::string& interface) const {
    std::lock_guard lock(mutex_);
    return globals_.count(interface) > 0;
}

std::optional<std::string> WaylandConnection::seatKeymap() const {
    std::lock_guard lock(mutex_);
    return keymap_;
}

wl_proxy* WaylandConnection::bind(const wl_interface& interface, std::uint32_t maxVersion) {
    Global global;
    {
        std::lock_guard lock(mutex_);
        const auto found = globals_.find(interface.name);
        if (found == globals_.end()) {
            return nullptr;
        }
        global = found->second;
    }
    return static_cast<wl_proxy*>(
        wl_registry_bind(registry_, global.name, &interface, std::min(global.version, maxVersion)));
}

void WaylandConnection::post(std::function<void()> task) {
    {
        std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(wake_[1], &byte, 1);
}

void WaylandConnection::run(std::function<void()> task) {
    if (onOwnThread()) {
        task();
        return;
    }
    std::promise<void> done;
    auto finished = done.get_future();
    post([&] {
        task();
        done.set_value();
    });
    finished.wait();
}

void WaylandConnection::runTasks() {
    char drain[64];
    while (::read(wake_[0], drain, sizeof drain) > 0) {
    }
    std::vector<std::function<void()>> tasks;
    {
        std::lock_guard lock(mutex_);
        tasks.swap(tasks_);
    }
    for (auto& task : tasks) {
        task();
    }
}

void WaylandConnection::loop() {
    const int fd = wl_display_get_fd(display_);
    while (true) {
        runTasks();
        if (stopping_) {
            break;
        }
        if (broken_) {
            // Keep serving tasks, which find nothing to talk to.
            pollfd wake = {wake_[0], POLLIN, 0};
            ::poll(&wake, 1, -1);
            continue;
        }
        while (wl_display_prepare_read(display_) != 0) {
            wl_display_dispatch_pending(display_);
        }
        wl_display_flush(display_);
        pollfd fds[2] = {{fd, POLLIN, 0}, {wake_[0], POLLIN, 0}};
        ::poll(fds, 2, -1);
        if ((fds[0].revents & POLLIN) != 0) {
            if (wl_display_read_events(display_) != 0) {
                broken_ = true;
            }
        } else {
            wl_display_cancel_read(display_);
        }
        if (wl_display_dispatch_pending(display_) < 0 || wl_display_get_error(display_) != 0) {
            broken_ = true;
        }
        if ((fds[0].revents & (POLLHUP | POLLERR)) != 0) {
            broken_ = true;
        }
    }
}

}  // namespace tevra
