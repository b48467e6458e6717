#pragma once

#include <memory>

#include "capture/key_injector.h"
#include "capture/wayland/toplevel_tracker.h"
#include "capture/wayland/wayland_connection.h"

namespace tevra {

// The paste chord through the compositor's virtual-keyboard protocol
// (wlroots). One keyboard is made at start and kept, with the seat's own
// keymap when the seat has one, so that the chord's first key is never lost
// to a keyboard just plugged in and the user's layout stays as it is. The
// modifiers are told along with the keys, as the protocol asks.
class VirtualKeyboardInjector : public KeyInjector {
public:
    // Null when the compositor offers no virtual keyboard or no seat.
    // toplevels, when there are any, name the focused application.
    static std::shared_ptr<VirtualKeyboardInjector> create(
        std::shared_ptr<WaylandConnection> wayland, std::shared_ptr<ToplevelTracker> toplevels);
    ~VirtualKeyboardInjector() override;

    bool isAvailable() override;
    std::optional<KeySequence> pasteSequence() override;
    bool pasteReadsPrimary() override;
    // Wayland tells no other program which keys are down.
    bool modifiersHeld() override { return false; }
    std::optional<KeySequence> copySequence() override;
    void post(const KeySequence& events) override;

    struct State;  // lives on the connection's thread

private:
    VirtualKeyboardInjector(std::shared_ptr<WaylandConnection> wayland,
                            std::shared_ptr<ToplevelTracker> toplevels);

    std::shared_ptr<WaylandConnection> wayland_;
    std::shared_ptr<ToplevelTracker> toplevels_;
    std::shared_ptr<State> state_;
};

}  // namespace tevra
