#pragma once

#include <QProcess>
#include <filesystem>
#include <string>

#include "support/temp_dir.h"

namespace tevra::testing {

// A headless KWin of its own with the desktop portal and KDE's backend for
// it, on a session bus of their own, as a Plasma session has them. KWin's
// binary carries a file capability that this sandbox does not allow, so a
// plain copy of it runs; each session gets a fresh HOME, so that nothing a
// previous run registered is kept.
class KwinSession {
public:
    KwinSession();
    ~KwinSession();
    KwinSession(const KwinSession&) = delete;
    KwinSession& operator=(const KwinSession&) = delete;

    // Whether KWin and the portal came up.
    bool running() const { return running_; }
    // The compositor's socket, as an absolute WAYLAND_DISPLAY.
    std::string socket() const { return (runtime_ / "wayland-tevra").string(); }
    const std::string& busAddress() const { return busAddress_; }
    std::string log() const;

private:
    void spawn(QProcess* process, const QString& program, const QStringList& arguments,
               const char* logName, bool onWayland);

    TempDir base_;
    std::filesystem::path runtime_;
    std::string busAddress_;
    bool running_ = false;
    QProcess bus_;
    QProcess kwin_;
    QProcess backend_;
    QProcess portal_;
};

}  // namespace tevra::testing
