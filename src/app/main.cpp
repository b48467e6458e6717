// Tevra, the desktop program: a tray icon, the talk key and the HUD on an X11
// or Wayland session. Everything it needs is made by TevraApplication.
#include <unistd.h>

#include <QApplication>
#include <QSocketNotifier>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "app/cli.h"
#include "app/dbus/tevra_bus_service.h"
#include "app/single_instance.h"
#include "app/tevra_application.h"
#include "base/log.h"
#include "capture/wayland/wayland_connection.h"
#include "core/weft_settings.h"
#include "crash/crash_reporter.h"

namespace {

int signalPipe[2] = {-1, -1};

void onTerminationSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}

// Ctrl+C in the terminal of `make run`, or a session that ends: leave the
// event loop, so that the program winds down as if "Quit Tevra" was chosen.
void quitOnTerminationSignals(QApplication& app) {
    if (::pipe(signalPipe) != 0) {
        return;
    }
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, &app);
    QObject::connect(notifier, &QSocketNotifier::activated, &app, [] { QApplication::quit(); });
    struct sigaction action = {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    using namespace tevra;
    if (CLI::runIfRequested()) {
        return 0;
    }
    // First of all, so that a crash anywhere after this leaves its report.
    CrashReporter::install(WeftSettings::defaultDir(), AppDelegate::appVersion());
    // On Wayland the keys, the clipboard and the paste speak the compositor's
    // own protocols; Tevra's windows need XWayland, and without it run unseen.
    std::shared_ptr<WaylandConnection> wayland;
    DesktopSession session = DesktopSession::detect(std::getenv, {});
    if (session.kind == DesktopSession::Kind::wayland) {
        wayland = WaylandConnection::open();
        if (wayland) {
            session = DesktopSession::detect(std::getenv, wayland->globals());
        } else if (const char* display = std::getenv("DISPLAY"); display && *display) {
            // Started from an X11 program in a session that calls itself
            // Wayland, or with a stale WAYLAND_DISPLAY: X11 is what answers.
            std::fprintf(stderr, "tevra: no Wayland compositor answers; using the X display %s.\n",
                         display);
            session = DesktopSession{};
        } else {
            std::fprintf(stderr, "tevra: cannot connect to the Wayland compositor (%s).\n",
                         std::getenv("WAYLAND_DISPLAY") ? std::getenv("WAYLAND_DISPLAY") : "");
            return 1;
        }
    }
    const char* display = std::getenv("DISPLAY");
    const bool hasDisplay = display != nullptr && *display != '\0';
    if (!hasDisplay && session.kind == DesktopSession::Kind::x11) {
        std::fprintf(stderr,
                     "tevra: no desktop session: neither DISPLAY nor WAYLAND_DISPLAY is set.\n");
        return 1;
    }
    std::shared_ptr<X11Connection> x = hasDisplay ? X11Connection::open() : nullptr;
    if (hasDisplay && !x) {
        std::fprintf(stderr, "tevra: cannot open the X display %s.\n", display);
        return 1;
    }
    const char* waylandDisplay = std::getenv("WAYLAND_DISPLAY");
    const std::string instanceName =
        hasDisplay ? display : (waylandDisplay ? waylandDisplay : "wayland-0");
    // The HUD and the pill place themselves, which only X11 (and XWayland)
    // allows; with no X display at all Tevra runs without windows.
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) {
        setenv("QT_QPA_PLATFORM", x ? "xcb" : "offscreen", 1);
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tevra"));
    QApplication::setApplicationVersion(QStringLiteral(TEVRA_VERSION));
    QApplication::setQuitOnLastWindowClosed(false);  // it lives on in the tray

    // One Tevra per session: the one that owns the bus name. A second launch
    // brings the first one's window to the front instead. Without a session
    // bus, a lock per display keeps a second one off.
    std::optional<SingleInstance> lock;
    switch (TevraBusService::claimName()) {
        case TevraBusService::Claim::owned:
            break;
        case TevraBusService::Claim::takenByAnother: {
            std::string refusal;
            if (!TevraBusService::askRunningToShowWindow(refusal)) {
                std::fprintf(stderr, "tevra: another Tevra owns %s but does not answer: %s\n",
                             TevraBusService::serviceName, refusal.c_str());
                return 1;
            }
            std::printf("Tevra is already running%s.\n",
                        refusal.empty() ? "; its window is in front" : (": " + refusal).c_str());
            return 0;
        }
        case TevraBusService::Claim::noBus:
            if (auto acquired = SingleInstance::acquire(instanceName)) {
                lock.emplace(std::move(*acquired));
                break;
            }
            std::fprintf(stderr, "tevra: Tevra is already running on this display.\n");
            return 1;
    }
    quitOnTerminationSignals(app);

    int status = 0;
    {
        TevraApplication tevra(std::move(x), session, std::move(wayland));
        tevra.launch();
        status = QApplication::exec();
    }
    Log::flush();
    return status;
}
