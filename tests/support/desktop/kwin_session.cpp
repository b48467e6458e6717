#include "support/desktop/kwin_session.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QProcessEnvironment>

#include "support/desktop/event_wait.h"
#include "support/subprocess.h"

namespace tevra::testing {
namespace {

constexpr const char* kPortalBackend = "/usr/lib/x86_64-linux-gnu/libexec/xdg-desktop-portal-kde";
constexpr const char* kPortal = "/usr/libexec/xdg-desktop-portal";

}  // namespace

KwinSession::KwinSession() : runtime_(base_ / "run") {
    std::filesystem::create_directories(runtime_);
    std::filesystem::create_directories(base_ / "home");
    ::chmod(runtime_.c_str(), 0700);
    // The copy must keep the name: KWin finds its plugins by it.
    std::filesystem::create_directories(base_ / "bin");
    std::error_code copied;
    std::filesystem::copy_file("/usr/bin/kwin_wayland", base_ / "bin" / "kwin_wayland", copied);
    if (copied) {
        ADD_FAILURE() << "cannot copy kwin_wayland: " << copied.message();
        return;
    }

    busAddress_ = "unix:path=" + (runtime_ / "bus").string();
    spawn(&bus_, "dbus-daemon",
          {"--session", "--nofork", QString::fromStdString("--address=" + busAddress_)}, "bus.log",
          false);
    if (!waitUntil([&] { return std::filesystem::exists(runtime_ / "bus"); }, 10)) {
        ADD_FAILURE() << "the session bus for KWin did not start";
        return;
    }
    spawn(&kwin_, QString::fromStdString((base_ / "bin" / "kwin_wayland").string()),
          {"--virtual", "--no-lockscreen", "--socket", "wayland-tevra"}, "kwin.log", false);
    if (!waitUntil([&] { return std::filesystem::exists(socket()); }, 15)) {
        ADD_FAILURE() << "KWin did not start: " << log();
        return;
    }
    spawn(&backend_, kPortalBackend, {}, "portal-kde.log", true);
    spawn(&portal_, kPortal, {"--replace"}, "portal.log", true);
    running_ = waitUntil(
        [&] {
            return runProcess({"dbus-send", "--print-reply", "--dest=org.freedesktop.DBus",
                               "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                               "string:org.freedesktop.portal.Desktop"},
                              {{"DBUS_SESSION_BUS_ADDRESS", busAddress_}})
                       .out.find("boolean true") != std::string::npos;
        },
        15);
    if (!running_) {
        ADD_FAILURE() << "the desktop portal did not start: " << log();
    }
}

void KwinSession::spawn(QProcess* process, const QString& program, const QStringList& arguments,
                        const char* logName, bool onWayland) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        env.remove(name);
    }
    env.insert("HOME", QString::fromStdString((base_ / "home").string()));
    env.insert("XDG_CONFIG_HOME", QString::fromStdString((base_ / "home" / ".config").string()));
    env.insert("XDG_DATA_HOME", QString::fromStdString((base_ / "home" / ".local/share").string()));
    env.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime_.string()));
    env.insert("XDG_CURRENT_DESKTOP", "KDE");
    env.insert("XDG_SESSION_TYPE", "wayland");
    if (!busAddress_.empty()) {
        env.insert("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(busAddress_));
    }
    if (onWayland) {
        env.insert("WAYLAND_DISPLAY", "wayland-tevra");
        env.insert("QT_QPA_PLATFORM", "wayland");
    }
    process->setProcessEnvironment(env);
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->setStandardOutputFile(QString::fromStdString((base_ / logName).string()));
    process->start(program, arguments);
}

KwinSession::~KwinSession() {
    for (QProcess* process : {&portal_, &backend_, &kwin_, &bus_}) {
        if (process->state() != QProcess::NotRunning) {
            process->terminate();
            if (!process->waitForFinished(5000)) {
                process->kill();
                process->waitForFinished(5000);
            }
        }
    }
    // The document portal, started by the bus on demand, mounts itself there.
    try {
        runProcess({"fusermount3", "-u", "-q", (runtime_ / "doc").string()});
    } catch (const std::exception&) {
        // Nothing was mounted without fuse.
    }
}

std::string KwinSession::log() const {
    std::string all;
    for (const char* name : {"kwin.log", "portal-kde.log", "portal.log"}) {
        all += std::string("--- ") + name + " ---\n" + readFile(base_ / name);
    }
    return all;
}

}  // namespace tevra::testing
