// Tevra, the desktop program: a tray icon, the talk key and the HUD on an X11
// session. Everything it needs is made by TevraApplication.
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
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0') {
        std::fprintf(stderr,
                     "tevra: no X display: DISPLAY is not set. Tevra needs an X11 desktop "
                     "session (on Wayland, XWayland's DISPLAY).\n");
        return 1;
    }
    auto x = X11Connection::open();
    if (!x) {
        std::fprintf(stderr, "tevra: cannot open the X display %s.\n", display);
        return 1;
    }
    // The hotkeys, the paste and the focus all speak X11; the clipboard and
    // the HUD must live on the same display, also in a Wayland session.
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) {
        setenv("QT_QPA_PLATFORM", "xcb", 1);
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
            if (auto acquired = SingleInstance::acquire(display)) {
                lock.emplace(std::move(*acquired));
                break;
            }
            std::fprintf(stderr, "tevra: Tevra is already running on display %s.\n", display);
            return 1;
    }
    quitOnTerminationSignals(app);

    int status = 0;
    {
        TevraApplication tevra(std::move(x));
        tevra.launch();
        status = QApplication::exec();
    }
    Log::flush();
    return status;
}
