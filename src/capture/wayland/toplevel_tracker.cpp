#include "capture/wayland/toplevel_tracker.h"

#include <cstdint>
#include <map>

#include "capture/wayland/wlr_interfaces.h"

namespace tevra {

struct ToplevelTracker::State {
    struct Window {
        Toplevel shown;    // as of the last done event
        Toplevel pending;  // what the events since told
        bool activated = false;
        bool pendingActivated = false;
    };
    wl_proxy* manager = nullptr;
    std::map<wl_proxy*, Window> windows;

    mutable std::mutex mutex;
    std::optional<Toplevel> active;

    // The focus moved, or the focused window changed its name.
    void publish() {
        std::optional<Toplevel> now;
        for (const auto& [handle, window] : windows) {
            if (window.activated) {
                now = window.shown;
            }
        }
        std::lock_guard lock(mutex);
        active = std::move(now);
    }
};

namespace {

using State = ToplevelTracker::State;

State::Window& windowOf(void* data, wl_proxy* handle) {
    return static_cast<State*>(data)->windows[handle];
}

const wayland::ToplevelHandleListener kHandleListener = {
    [](void* data, wl_proxy* handle, const char* title) {
        windowOf(data, handle).pending.title = title;
    },
    [](void* data, wl_proxy* handle, const char* appId) {
        windowOf(data, handle).pending.appId = appId;
    },
    [](void*, wl_proxy*, wl_proxy*) {},
    [](void*, wl_proxy*, wl_proxy*) {},
    [](void* data, wl_proxy* handle, wl_array* states) {
        bool activated = false;
        const auto* values = static_cast<const std::uint32_t*>(states->data);
        for (std::size_t i = 0; i < states->size / sizeof(std::uint32_t); ++i) {
            activated = activated || values[i] == wayland::toplevelActivated;
        }
        windowOf(data, handle).pendingActivated = activated;
    },
    [](void* data, wl_proxy* handle) {
        State::Window& window = windowOf(data, handle);
        window.shown = window.pending;
        window.activated = window.pendingActivated;
        static_cast<State*>(data)->publish();
    },
    [](void* data, wl_proxy* handle) {
        auto* state = static_cast<State*>(data);
        state->windows.erase(handle);
        wl_proxy_marshal_flags(handle, wayland::request::handleDestroy, nullptr,
                               wl_proxy_get_version(handle), WL_MARSHAL_FLAG_DESTROY);
        state->publish();
    },
    [](void*, wl_proxy*, wl_proxy*) {},
};

const wayland::ToplevelManagerListener kManagerListener = {
    [](void* data, wl_proxy*, wl_proxy* handle) {
        static_cast<State*>(data)->windows[handle];
        wl_proxy_add_listener(handle,
                              reinterpret_cast<void (**)(void)>(
                                  const_cast<wayland::ToplevelHandleListener*>(&kHandleListener)),
                              data);
    },
    [](void* data, wl_proxy* manager) {
        static_cast<State*>(data)->manager = nullptr;
        wl_proxy_destroy(manager);
    },
};

}  // namespace

std::shared_ptr<ToplevelTracker> ToplevelTracker::create(
    std::shared_ptr<WaylandConnection> wayland) {
    if (!wayland || !wayland->offers(wayland::toplevelManager.name)) {
        return nullptr;
    }
    return std::shared_ptr<ToplevelTracker>(new ToplevelTracker(std::move(wayland)));
}

ToplevelTracker::ToplevelTracker(std::shared_ptr<WaylandConnection> wayland)
    : wayland_(std::move(wayland)), state_(std::make_shared<State>()) {
    wayland_->run([this] {
        state_->manager = wayland_->bind(wayland::toplevelManager, 3);
        wl_proxy_add_listener(state_->manager,
                              reinterpret_cast<void (**)(void)>(
                                  const_cast<wayland::ToplevelManagerListener*>(&kManagerListener)),
                              state_.get());
    });
}

ToplevelTracker::~ToplevelTracker() {
    wayland_->run([state = state_] {
        for (auto& [handle, window] : state->windows) {
            wl_proxy_destroy(handle);
        }
        state->windows.clear();
        if (state->manager != nullptr) {
            wl_proxy_destroy(state->manager);
        }
    });
}

std::optional<ToplevelTracker::Toplevel> ToplevelTracker::active() const {
    std::lock_guard lock(state_->mutex);
    return state_->active;
}

}  // namespace tevra
