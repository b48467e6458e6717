#include "capture/wayland/virtual_keyboard_injector.h"

#include <sys/mman.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

#include <chrono>
#include <cstring>

#include "capture/paste_chords.h"
#include "capture/wayland/wlr_interfaces.h"

namespace tevra {

struct VirtualKeyboardInjector::State {
    wl_proxy* manager = nullptr;
    wl_proxy* keyboard = nullptr;
    xkb_context* context = nullptr;
    xkb_keymap* keymap = nullptr;
    xkb_state* keys = nullptr;
    bool ready = false;

    ~State() {
        xkb_state_unref(keys);
        xkb_keymap_unref(keymap);
        xkb_context_unref(context);
    }

    ChordKeyCodes chordKeys() const {
        return {keycodeOf(XKB_KEY_Control_L), keycodeOf(XKB_KEY_Shift_L), keycodeOf(XKB_KEY_v),
                keycodeOf(XKB_KEY_c), keycodeOf(XKB_KEY_Insert)};
    }

    // The first key code that gives keysym without Shift or another level.
    unsigned keycodeOf(xkb_keysym_t keysym) const {
        const xkb_keycode_t min = xkb_keymap_min_keycode(keymap);
        const xkb_keycode_t max = xkb_keymap_max_keycode(keymap);
        for (xkb_keycode_t code = min; code <= max; ++code) {
            const xkb_keysym_t* syms = nullptr;
            const int count = xkb_keymap_key_get_syms_by_level(keymap, code, 0, 0, &syms);
            for (int i = 0; i < count; ++i) {
                if (syms[i] == keysym) {
                    return code;
                }
            }
        }
        return 0;
    }
};

namespace {

// The keymap as a file the compositor can map.
int keymapFile(const std::string& text) {
    const int fd = memfd_create("tevra-keymap", MFD_CLOEXEC);
    if (fd < 0) {
        return -1;
    }
    const std::size_t size = text.size() + 1;
    if (ftruncate(fd, static_cast<off_t>(size)) != 0) {
        ::close(fd);
        return -1;
    }
    void* map = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (map == MAP_FAILED) {
        ::close(fd);
        return -1;
    }
    std::memcpy(map, text.c_str(), size);
    munmap(map, size);
    return fd;
}

std::uint32_t milliseconds() {
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::steady_clock::now().time_since_epoch())
                                          .count());
}

}  // namespace

std::shared_ptr<VirtualKeyboardInjector> VirtualKeyboardInjector::create(
    std::shared_ptr<WaylandConnection> wayland, std::shared_ptr<ToplevelTracker> toplevels) {
    if (!wayland || wayland->seat() == nullptr ||
        !wayland->offers(wayland::virtualKeyboardManager.name)) {
        return nullptr;
    }
    return std::shared_ptr<VirtualKeyboardInjector>(
        new VirtualKeyboardInjector(std::move(wayland), std::move(toplevels)));
}

VirtualKeyboardInjector::VirtualKeyboardInjector(std::shared_ptr<WaylandConnection> wayland,
                                                 std::shared_ptr<ToplevelTracker> toplevels)
    : wayland_(std::move(wayland)),
      toplevels_(std::move(toplevels)),
      state_(std::make_shared<State>()) {
    State& state = *state_;
    state.context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (state.context == nullptr) {
        return;
    }
    // The seat's keymap, or else the one XKB_DEFAULT_LAYOUT and its kin name.
    std::string text;
    if (const auto seatKeymap = wayland_->seatKeymap()) {
        state.keymap =
            xkb_keymap_new_from_string(state.context, seatKeymap->c_str(),
                                       XKB_KEYMAP_FORMAT_TEXT_V1, XKB_KEYMAP_COMPILE_NO_FLAGS);
    }
    if (state.keymap == nullptr) {
        state.keymap =
            xkb_keymap_new_from_names(state.context, nullptr, XKB_KEYMAP_COMPILE_NO_FLAGS);
    }
    if (state.keymap == nullptr) {
        return;
    }
    char* serialised = xkb_keymap_get_as_string(state.keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    text = serialised;
    std::free(serialised);
    state.keys = xkb_state_new(state.keymap);
    const int fd = keymapFile(text);
    if (fd < 0 || state.keys == nullptr) {
        return;
    }
    wayland_->run([this, fd, size = static_cast<std::uint32_t>(text.size() + 1)] {
        State& onThread = *state_;
        onThread.manager = wayland_->bind(wayland::virtualKeyboardManager, 1);
        onThread.keyboard = wl_proxy_marshal_flags(
            onThread.manager, wayland::request::keyboardManagerCreate, &wayland::virtualKeyboard,
            wl_proxy_get_version(onThread.manager), 0, wayland_->seat(), nullptr);
        wl_proxy_marshal_flags(onThread.keyboard, wayland::request::keyboardKeymap, nullptr,
                               wl_proxy_get_version(onThread.keyboard), 0,
                               static_cast<std::uint32_t>(XKB_KEYMAP_FORMAT_TEXT_V1), fd, size);
        ::close(fd);
        onThread.ready = true;
    });
}

VirtualKeyboardInjector::~VirtualKeyboardInjector() {
    wayland_->run([state = state_] {
        if (state->keyboard != nullptr) {
            wl_proxy_marshal_flags(state->keyboard, wayland::request::keyboardDestroy, nullptr,
                                   wl_proxy_get_version(state->keyboard), WL_MARSHAL_FLAG_DESTROY);
        }
        if (state->manager != nullptr) {
            wl_proxy_destroy(state->manager);
        }
    });
}

bool VirtualKeyboardInjector::isAvailable() {
    return state_->ready && !wayland_->broken();
}

namespace {

PasteChord activeChord(const std::shared_ptr<ToplevelTracker>& toplevels) {
    if (!toplevels) {
        return PasteChord::ctrlV;
    }
    const auto active = toplevels->active();
    return active ? pasteChordFor(active->appId) : PasteChord::ctrlV;
}

}  // namespace

bool VirtualKeyboardInjector::pasteReadsPrimary() {
    return activeChord(toplevels_) == PasteChord::shiftInsertPrimary;
}

std::optional<KeySequence> VirtualKeyboardInjector::pasteSequence() {
    if (!isAvailable()) {
        return std::nullopt;
    }
    return pasteStrokes(activeChord(toplevels_), state_->chordKeys());
}

std::optional<KeySequence> VirtualKeyboardInjector::copySequence() {
    if (!isAvailable()) {
        return std::nullopt;
    }
    return copyStrokes(activeChord(toplevels_), state_->chordKeys());
}

void VirtualKeyboardInjector::post(const KeySequence& events) {
    wayland_->post([state = state_, events] {
        if (state->keyboard == nullptr) {
            return;
        }
        const auto version = wl_proxy_get_version(state->keyboard);
        for (const KeyStroke& stroke : events) {
            // The protocol counts keys as evdev does: eight below XKB's codes.
            wl_proxy_marshal_flags(state->keyboard, wayland::request::keyboardKey, nullptr, version,
                                   0, milliseconds(), stroke.keycode - 8,
                                   static_cast<std::uint32_t>(stroke.down ? 1 : 0));
            const auto changed = xkb_state_update_key(state->keys, stroke.keycode,
                                                      stroke.down ? XKB_KEY_DOWN : XKB_KEY_UP);
            if ((changed & XKB_STATE_MODS_EFFECTIVE) != 0) {
                wl_proxy_marshal_flags(
                    state->keyboard, wayland::request::keyboardModifiers, nullptr, version, 0,
                    xkb_state_serialize_mods(state->keys, XKB_STATE_MODS_DEPRESSED),
                    xkb_state_serialize_mods(state->keys, XKB_STATE_MODS_LATCHED),
                    xkb_state_serialize_mods(state->keys, XKB_STATE_MODS_LOCKED),
                    xkb_state_serialize_layout(state->keys, XKB_STATE_LAYOUT_EFFECTIVE));
            }
        }
    });
}

}  // namespace tevra
