#pragma once

#include "capture/hotkey_backend.h"

namespace tevra {

// The keys of a session where no program may watch the keyboard: the user
// binds `tevractl record toggle` (and its kin) to a shortcut of the desktop,
// and those commands reach the orchestrator over the session bus, not
// through this backend. It only names the way in.
class SessionBusHotkeys : public HotkeyBackend {
public:
    std::optional<std::string> start() override { return "session bus"; }
    void stop() override {}
    void enableCancelKey() override {}
    void disableCancelKey() override {}
};

}  // namespace tevra
