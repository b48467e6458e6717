#pragma once

#include <QObject>
#include <memory>

#include "app/app_delegate.h"
#include "app/qt/qt_main_queue.h"
#include "base/notification_center.h"
#include "capture/desktop_session.h"
#include "capture/linux/x11_connection.h"
#include "capture/linux/x_own_grabs.h"
#include "capture/linux/x_synthetic_keys.h"

namespace tevra {

class Chime;
class WaylandConnection;
class RemoteControl;
class TevraBusService;
class SettingsFileWatcher;
class TrayStatusItem;
class MainWindow;

// The composition root of the desktop program: every platform service made
// once, on the X display and the sound server of the session, and handed to
// the orchestrator. Lives on the main thread for as long as the event loop.
class TevraApplication {
public:
    // x is null where there is no X display (Wayland without XWayland);
    // wayland is null on X11.
    TevraApplication(std::shared_ptr<X11Connection> x, DesktopSession session,
                     std::shared_ptr<WaylandConnection> wayland);
    ~TevraApplication();
    TevraApplication(const TevraApplication&) = delete;
    TevraApplication& operator=(const TevraApplication&) = delete;

    // Brings the program up: runtime, microphone check, hotkeys.
    void launch();

private:
    // One line for the terminal of `make run`: which key to hold, where the log
    // is; and the warning, there and in the log, when no speech service is reachable.
    void greet() const;
    // The control interface on the session bus, for shortcuts and scripts.
    void publishOnTheBus();
    // A hand edit of settings.json: the runtime reloads and the hotkeys follow.
    void settingsFileChanged();
    // The notetaker on the sound server and the windows of the session.
    std::shared_ptr<NotetakerController> makeNotetaker(WeftRuntime& runtime);
    std::unique_ptr<DesktopKeyboard> makeKeyboard();
    bool inputControlAvailable();
    std::string talkKey() const;
    // Makes the main window the first time, then brings it to the front.
    void showMainWindow();

    DesktopSession session_;
    QtMainQueue queue_;
    NotificationCenter notifications_{queue_};
    std::shared_ptr<X11Connection> x_;
    std::shared_ptr<WaylandConnection> wayland_;
    std::shared_ptr<XOwnGrabs> ownGrabs_ = std::make_shared<XOwnGrabs>();
    std::shared_ptr<XSyntheticKeys> syntheticKeys_ = std::make_shared<XSyntheticKeys>();
    std::shared_ptr<TrayStatusItem> tray_;
    std::shared_ptr<WorkPool> work_;
    std::shared_ptr<Chime> chime_;
    std::shared_ptr<AppDelegate> delegate_;
    std::unique_ptr<SettingsFileWatcher> settingsWatcher_;
    std::shared_ptr<RemoteControl> control_;
    std::unique_ptr<TevraBusService> bus_;
    std::unique_ptr<MainWindow> window_;
};

}  // namespace tevra
