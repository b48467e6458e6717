#include "support/desktop/sway_session.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QProcessEnvironment>
#include <fstream>

#include "support/desktop/event_wait.h"
#include "support/subprocess.h"

namespace tevra::testing {
namespace {

constexpr uid_t kNobody = 65534;

}  // namespace

SwaySession::SwaySession(const std::vector<std::string>& configLines) : runtime_(base_ / "run") {
    ::chmod(base_.path().c_str(), 0755);
    std::filesystem::create_directories(runtime_);
    ::chmod(runtime_.c_str(), 0700);
    if (::chown(runtime_.c_str(), kNobody, kNobody) != 0) {
        ADD_FAILURE() << "cannot hand the compositor's runtime directory to nobody";
        return;
    }

    const auto busSocket = base_ / "bus";
    std::ofstream(base_ / "bus.conf")
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>unix:path="
        << busSocket.string()
        << "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
           "<allow user=\"*\"/><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
    bus_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    bus_.start(
        "dbus-daemon",
        {"--nofork", "--config-file=" + QString::fromStdString((base_ / "bus.conf").string())});
    if (!waitUntil([&] { return std::filesystem::exists(busSocket); }, 10)) {
        ADD_FAILURE() << "the session bus for sway did not start";
        return;
    }
    ::chmod(busSocket.c_str(), 0777);
    busAddress_ = "unix:path=" + busSocket.string();

    {
        std::ofstream config(base_ / "sway.conf");
        config << "xwayland disable\noutput HEADLESS-1 resolution 1280x800\n";
        for (const std::string& line : configLines) {
            config << line << "\n";
        }
    }
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"}) {
        env.remove(name);
    }
    env.insert("XDG_RUNTIME_DIR", QString::fromStdString(runtime_.string()));
    env.insert("HOME", QString::fromStdString(runtime_.string()));
    env.insert("WLR_BACKENDS", "headless");
    env.insert("WLR_LIBINPUT_NO_DEVICES", "1");
    env.insert("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(busAddress_));
    sway_.setProcessEnvironment(env);
    sway_.setProcessChannelMode(QProcess::MergedChannels);
    sway_.setStandardOutputFile(QString::fromStdString((base_ / "sway.log").string()));
    sway_.start("setpriv", {"--reuid=65534", "--regid=65534", "--clear-groups", "sway", "-c",
                            QString::fromStdString((base_ / "sway.conf").string())});
    std::string found;
    waitUntil(
        [&] {
            std::error_code ignored;
            for (const auto& entry : std::filesystem::directory_iterator(runtime_, ignored)) {
                const std::string name = entry.path().filename().string();
                if (name.starts_with("wayland-") && !name.ends_with(".lock") && entry.is_socket()) {
                    found = entry.path().string();
                }
            }
            return !found.empty();
        },
        10);
    if (found.empty()) {
        ADD_FAILURE() << "sway did not start: " << log();
        return;
    }
    socket_ = found;
}

SwaySession::~SwaySession() {
    for (QProcess* process : {&sway_, &bus_}) {
        if (process->state() != QProcess::NotRunning) {
            process->terminate();
            if (!process->waitForFinished(5000)) {
                process->kill();
                process->waitForFinished(5000);
            }
        }
    }
}

std::string SwaySession::message(const std::vector<std::string>& command) const {
    std::vector<std::string> argv{"swaymsg"};
    argv.insert(argv.end(), command.begin(), command.end());
    std::string ipc;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator(runtime_, ignored)) {
        if (entry.path().filename().string().starts_with("sway-ipc.")) {
            ipc = entry.path().string();
        }
    }
    return runProcess(argv, {{"SWAYSOCK", ipc}}).out;
}

void SwaySession::press(const std::vector<std::string>& modifiers, const std::string& key) const {
    std::vector<std::string> argv{"wtype"};
    for (const std::string& modifier : modifiers) {
        argv.insert(argv.end(), {"-M", modifier});
    }
    argv.insert(argv.end(), {"-k", key});
    for (const std::string& modifier : modifiers) {
        argv.insert(argv.end(), {"-m", modifier});
    }
    const auto result = runProcess(argv, {{"WAYLAND_DISPLAY", socket_}});
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

std::string SwaySession::log() const {
    return readFile(base_ / "sway.log");
}

}  // namespace tevra::testing
