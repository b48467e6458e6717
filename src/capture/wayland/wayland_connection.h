#pragma once

#include <wayland-client.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tevra {

// One connection to the Wayland compositor, read on a thread of its own. Its
// proxies are made and used only on that thread: other threads hand it work
// with post() or run(). The globals the compositor offered are known from the
// start, so that the session's paths can be chosen before anything is bound.
class WaylandConnection {
public:
    // Connects to WAYLAND_DISPLAY (or the given socket); null when there is no
    // compositor to connect to.
    static std::shared_ptr<WaylandConnection> open(const std::string& socket = {});
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    // The interface names of the compositor's globals, as it announced them.
    std::vector<std::string> globals() const;
    bool offers(const std::string& interface) const;

    // Runs task on the connection's thread, then sends what it asked for.
    void post(std::function<void()> task);
    // The same, waiting until it has run. Never from the connection's thread.
    void run(std::function<void()> task);
    bool onOwnThread() const { return std::this_thread::get_id() == thread_.get_id(); }

    // On the connection's thread: binds the global with that interface at no
    // more than maxVersion; null when it is not offered.
    wl_proxy* bind(const wl_interface& interface, std::uint32_t maxVersion);
    wl_seat* seat() const { return seat_; }
    // The keymap the seat's keyboard announced (XKB text), if it has one.
    std::optional<std::string> seatKeymap() const;
    // Whether the compositor closed the connection or refused a request.
    bool broken() const { return broken_; }

private:
    struct Global {
        std::uint32_t name = 0;
        std::uint32_t version = 0;
    };

    WaylandConnection(wl_display* display);
    void loop();
    void runTasks();
    static void onGlobal(void* data, wl_registry*, std::uint32_t name, const char* interface,
                         std::uint32_t version);
    static void onGlobalRemove(void*, wl_registry*, std::uint32_t) {}
    static void onSeatCapabilities(void* data, wl_seat*, std::uint32_t capabilities);
    static void onSeatName(void*, wl_seat*, const char*) {}
    static void onKeymap(void* data, wl_keyboard*, std::uint32_t format, std::int32_t fd,
                         std::uint32_t size);

    wl_display* display_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    wl_keyboard* keyboard_ = nullptr;
    mutable std::mutex mutex_;
    std::map<std::string, Global> globals_;
    std::optional<std::string> keymap_;
    std::vector<std::function<void()>> tasks_;
    int wake_[2] = {-1, -1};
    std::atomic<bool> stopping_{false};
    std::atomic<bool> broken_{false};
    std::thread thread_;
};

}  // namespace tevra
