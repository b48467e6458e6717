#pragma once

#include <QProcess>
#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_dir.h"

namespace tevra::testing {

// A headless sway of its own, with no XWayland, and a session bus that the
// compositor's children share with the test. sway refuses to run as root, so
// it runs as nobody; the bus lets every user in, so that a binding's
// `tevractl`, run by sway as nobody, reaches a Tevra run by the test.
class SwaySession {
public:
    // configLines are added to the compositor's configuration (bindings).
    explicit SwaySession(const std::vector<std::string>& configLines = {});
    ~SwaySession();
    SwaySession(const SwaySession&) = delete;
    SwaySession& operator=(const SwaySession&) = delete;

    bool running() const { return !socket_.empty(); }
    // The compositor's socket, as an absolute WAYLAND_DISPLAY.
    const std::string& socket() const { return socket_; }
    const std::string& busAddress() const { return busAddress_; }
    // Runs a command of the sway IPC (swaymsg) and returns what it printed.
    std::string message(const std::vector<std::string>& command) const;
    // Presses a key chord with a virtual keyboard of its own, as
    // "ctrl", "F9": the modifiers held around the key.
    void press(const std::vector<std::string>& modifiers, const std::string& key) const;
    // The compositor's log, for a failing test's report.
    std::string log() const;

private:
    TempDir base_;
    std::filesystem::path runtime_;
    std::string socket_;
    std::string busAddress_;
    QProcess bus_;
    QProcess sway_;
};

}  // namespace tevra::testing
