#include "app/tevra_application.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "app/dbus/tevra_bus_service.h"
#include "app/qt/screen_text_tools.h"
#include "app/qt/settings_file_watcher.h"
#include "app/qt/tray_status_item.h"
#include "app/remote_control.h"
#include "base/log.h"
#include "capture/held_keys_injector.h"
#include "capture/linux/atspi_focus.h"
#include "capture/linux/pulse_audio_input.h"
#include "capture/linux/pulse_microphone_access.h"
#include "capture/linux/x11_clipboard_reader.h"
#include "capture/linux/x11_focus_probe.h"
#include "capture/linux/x11_key_injector.h"
#include "capture/linux/x11_secure_input.h"
#include "capture/microphone_recorder.h"
#include "capture/no_key_injector.h"
#include "capture/qt/portal_global_shortcuts.h"
#include "capture/qt/portal_remote_desktop.h"
#include "capture/qt/portal_request.h"
#include "capture/qt/qt_clipboard.h"
#include "capture/qt/qt_sound_cues.h"
#include "capture/session_bus_hotkeys.h"
#include "capture/shortcut_hotkeys.h"
#include "capture/wayland/data_control_clipboard.h"
#include "capture/wayland/virtual_keyboard_injector.h"
#include "capture/wayland/wayland_focus_probe.h"
#include "core/linux/libsecret_store.h"
#include "crash/crash_reporter.h"
#include "notetaker/linux/pulse_microphone_use.h"
#include "notetaker/linux/pulse_monitor_source.h"
#include "notetaker/linux/x11_running_applications.h"
#include "pill/linux/x11_compositor.h"
#include "pill/pill_manager.h"
#include "pill/qt/hud_controller.h"
#include "pill/qt/qt_pill_desktop.h"
#include "ui/qt/main_window.h"
#include "ui/qt/theme.h"
#include "ui/qt/wizard_windows.h"
#include "update/qt/qt_update_prompt.h"
#include "update/update_checker.h"
// Xlib last: its macros (None, Status) clash with Qt's names.
#include "capture/linux/x_keyboard.h"

namespace tevra {
namespace {

constexpr const char* kNoSpeechKey =
    "no speech service key: set GROQ_API_KEY or OPENAI_API_KEY, or keep one in the keyring "
    "(see the README)";

constexpr const char* kNoXWayland =
    "no XWayland: Tevra runs without its windows (no HUD, pill or tray icon); quit it with "
    "Ctrl+C or by ending the session";

// Dictations that overlap: one still being transcribed while the next is
// recorded, and perhaps a third.
constexpr std::size_t kPipelineThreads = 3;

void writeLog(const std::string& line) {
    Log::write(line);
}

}  // namespace

TevraApplication::TevraApplication(std::shared_ptr<X11Connection> x, DesktopSession session,
                                   std::shared_ptr<WaylandConnection> wayland)
    : session_(session),
      x_(std::move(x)),
      wayland_(std::move(wayland)),
      tray_(x_ ? std::make_shared<TrayStatusItem>(
                     [this] {
                         if (delegate_) {
                             delegate_->showSettingsWindow();
                         }
                     },
                     [] { QCoreApplication::quit(); })
               : nullptr),
      work_(std::make_shared<WorkPool>(kPipelineThreads)) {
    auto focus = std::make_shared<AtspiFocus>();
    const bool onWayland = session_.kind == DesktopSession::Kind::wayland;
    // On Wayland the keys and the clipboard never go through XWayland, which
    // reaches only the X11 windows.
    auto secure = std::make_shared<X11SecureInput>(onWayland ? nullptr : x_, focus,
                                                   [grabs = ownGrabs_] { return grabs->active(); });

    AppServices services;
    services.queue = &queue_;
    services.notifications = &notifications_;
    services.hud = HUDController::create(queue_);
    services.recorder = std::make_shared<MicrophoneRecorder>(queue_, PulseAudioInput::factory());
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<KeyInjector> keys;
    std::shared_ptr<FocusProbe> focusProbe;
    if (onWayland) {
        auto toplevels = ToplevelTracker::create(wayland_);
        if (session_.clipboard == DesktopSession::Clipboard::dataControl) {
            clipboard = DataControlClipboard::create(queue_, wayland_);
        }
        // The portals know Tevra by its application id only when the
        // desktop started it from its menu entry; a terminal's Tevra says it.
        if (session_.keys == DesktopSession::Keys::globalShortcutsPortal ||
            session_.paste == DesktopSession::Paste::remoteDesktopPortal) {
            PortalRequest::registerHostApp(QDBusConnection::sessionBus(),
                                           QString::fromLatin1(TevraBusService::serviceName));
        }
        if (session_.paste == DesktopSession::Paste::virtualKeyboard) {
            keys = VirtualKeyboardInjector::create(wayland_, toplevels);
        } else if (session_.paste == DesktopSession::Paste::remoteDesktopPortal) {
            auto portal = std::make_shared<PortalRemoteDesktop>(
                WeftSettings::defaultDir() / "remote_desktop_token", writeLog);
            portal->start();
            keys = portal;
        }
        focusProbe = std::make_shared<WaylandFocusProbe>(toplevels, focus);
        if (session_.keys == DesktopSession::Keys::globalShortcutsPortal) {
            // Each restart of the keys makes a new backend; the chords ask
            // whichever is current whether its keys are still held.
            auto current = std::make_shared<std::weak_ptr<ShortcutHotkeys>>();
            services.makeSessionHotkeys = [this,
                                           current](const std::vector<std::string>& voiceNames) {
                auto hotkeys = std::make_shared<ShortcutHotkeys>(
                    queue_, std::make_unique<PortalGlobalShortcuts>(queue_, writeLog), voiceNames,
                    writeLog);
                *current = hotkeys;
                return hotkeys;
            };
            if (keys) {
                keys = std::make_shared<HeldKeysInjector>(keys, [current] {
                    const auto hotkeys = current->lock();
                    return hotkeys && hotkeys->keysHeld();
                });
            }
        } else {
            services.makeSessionHotkeys = [](const std::vector<std::string>&) {
                return std::make_shared<SessionBusHotkeys>();
            };
        }
    } else {
        keys = std::make_shared<X11KeyInjector>(x_, syntheticKeys_);
        focusProbe = std::make_shared<X11FocusProbe>(x_, focus);
    }
    if (!clipboard) {
        clipboard = std::make_shared<QtClipboard>(x_ ? std::make_shared<X11ClipboardReader>(queue_)
                                                     : nullptr);
    }
    if (!keys) {
        keys = std::make_shared<NoKeyInjector>();
    }
    services.inserter = std::make_shared<TextInserter>(queue_, clipboard, keys, secure);
    services.contextReader = std::make_shared<ContextReader>(focusProbe);
    services.clipboard = clipboard;
    services.focus = focusProbe;
    if (onWayland) {
        // The selection is read as on X11, by the copy chord and the
        // clipboard. The screen is read through X11, where on Wayland only
        // XWayland's windows would be seen, so the selection tool and the
        // screenshot voice wait for the Screenshot portal.
        services.focusedSelection =
            std::make_shared<FocusedSelection>(queue_, clipboard, keys, secure);
    } else {
        ScreenTextTools screenText =
            ScreenTextTools::make(queue_, work_, x_, clipboard, keys, secure, focusProbe, writeLog);
        services.selection = std::move(screenText.selection);
        services.screenReader = std::move(screenText.screenReader);
        services.focusedSelection = std::move(screenText.focusedSelection);
    }
    chime_ = std::make_shared<Chime>(std::make_shared<QtSoundCues>());
    services.chime = chime_;
    services.secureInput = secure;
    services.microphone = std::make_shared<PulseMicrophoneAccess>();
    services.statusItem = tray_;
    services.work = work_;
    services.makeRuntime = [] {
        return std::make_unique<WeftRuntime>(WeftSettings::defaultDir(), /*fetchKeys=*/true,
                                             std::make_shared<LibsecretStore>());
    };
    services.makeNotetaker = [this](WeftRuntime& runtime) { return makeNotetaker(runtime); };
    if (x_) {
        services.makePill = [this](WeftRuntime& runtime, PillManager::OnPaste onPaste) {
            auto desktop = std::make_shared<QtPillDesktop>(
                queue_, [x = x_] { return x11CompositorRunning(*x); });
            return PillManager::create(queue_, runtime, &notifications_, std::move(desktop),
                                       std::move(onPaste), PillPreview::fromEnvironment());
        };
    }
    services.makeKeyboard = [this] { return makeKeyboard(); };
    services.inputControlAvailable = [this] { return inputControlAvailable(); };
    services.log = writeLog;
    services.showMainWindow = [this] { showMainWindow(); };
    services.ui.applyAppearance = [](const std::string& appearance) {
        Theme::applyAppearance(appearance);
    };
    services.ui.quit = [] { QCoreApplication::quit(); };
    services.makeWizardWindow = [](OnboardingWizard& wizard, std::function<void()> onClose) {
        return std::make_unique<WizardWindow>(wizard, std::move(onClose));
    };
    services.makeMicrophoneWindow = [](OnboardingController& controller,
                                       std::function<void()> onClose) {
        return std::make_unique<MicrophoneWindow>(controller, std::move(onClose));
    };
    if (Deployment::updateCheckEnabled) {
        services.checkForUpdate = [](const std::string& feed, const std::string& version) {
            return UpdateChecker::check(feed, version);
        };
        services.updatePrompt = std::make_shared<QtUpdatePrompt>();
    }
    services.flushCrashReports = [](const std::filesystem::path& dir, bool enabled,
                                    const std::optional<std::string>& endpoint) {
        CrashReporter::flushPending(dir, enabled, endpoint);
    };
    delegate_ = AppDelegate::create(std::move(services));
}

TevraApplication::~TevraApplication() {
    window_.reset();
    bus_.reset();
    settingsWatcher_.reset();
    delegate_.reset();
    // Dictations still in the pipeline end before the services they use go;
    // their results, posted for an event loop that has stopped, are dropped.
    work_->waitUntilIdle();
    QCoreApplication::removePostedEvents(nullptr);
    Log::flush();
}

void TevraApplication::launch() {
    Theme::applyAppearance(WeftSettings::load(WeftSettings::defaultDir()).appearance);
    delegate_->applicationDidFinishLaunching();
    const WeftRuntime& runtime = *delegate_->runtime();
    Log::write("keys: " + runtime.keyStatusDescription() +
               (runtime.proxyToken() && !runtime.proxyToken()->empty() ? "  relay: \u2713" : ""));
    greet();
    publishOnTheBus();
    const auto path = delegate_->runtime()->dataDir() / "settings.json";
    settingsWatcher_ = std::make_unique<SettingsFileWatcher>(QString::fromStdString(path.string()),
                                                             [this] { settingsFileChanged(); });
}

void TevraApplication::publishOnTheBus() {
    control_ = std::make_shared<RemoteControl>(queue_, delegate_);
    bus_ = std::make_unique<TevraBusService>(control_);
    delegate_->onCaptureStateChanged = [bus = bus_.get()] { bus->stateMayHaveChanged(); };
    if (session_.kind == DesktopSession::Kind::wayland) {
        bus_->setPaths(session_.name() + " session \u2014 " + session_.pathsDescription());
    }
    if (!bus_->publish()) {
        Log::write("session bus: the control interface could not be published");
    }
}

void TevraApplication::greet() const {
    const WeftRuntime& runtime = *delegate_->runtime();
    const auto& name = delegate_->hotkeyName();
    const std::string log = (runtime.dataDir() / "tevra.log").string();
    if (!name) {
        std::printf("Tevra is running, but no hotkey could be registered. Log: %s\n", log.c_str());
    } else if (session_.keys == DesktopSession::Keys::globalShortcutsPortal) {
        std::printf(
            "Tevra is running: hold Alt+1 anywhere (or the key your desktop's shortcut settings "
            "give \"Talk key\"), speak, let go. Log: %s\n",
            log.c_str());
    } else if (session_.keys == DesktopSession::Keys::sessionBus) {
        std::printf(
            "Tevra is running: bind `tevractl record toggle` to a shortcut of your desktop "
            "(see the README), press it, speak, press it again. Log: %s\n",
            log.c_str());
    } else {
        std::printf("Tevra is running: hold %s anywhere, speak, let go. Log: %s\n",
                    *name == "fn-tap" ? runtime.settings().talkKey.c_str() : "Alt+1", log.c_str());
    }
    std::fflush(stdout);
    if (const auto& notice = runtime.storeNotice()) {
        std::fprintf(stderr, "tevra: %s.\n", notice->c_str());
    }
    for (const std::string& notice : delegate_->hotkeyNotices()) {
        std::fprintf(stderr, "tevra: %s.\n", notice.c_str());
    }
    if (session_.kind == DesktopSession::Kind::wayland) {
        const std::string paths =
            session_.name() + " session \u2014 " + session_.pathsDescription();
        Log::write(paths);
        std::fprintf(stderr, "tevra: %s.\n", paths.c_str());
        if (!session_.xwayland) {
            Log::write(kNoXWayland);
            std::fprintf(stderr, "tevra: %s.\n", kNoXWayland);
        }
    }
    if (!runtime.hasCloudSTT()) {
        Log::write(kNoSpeechKey);
        std::fprintf(stderr, "tevra: %s.\n", kNoSpeechKey);
    }
}

void TevraApplication::settingsFileChanged() {
    WeftRuntime* runtime = delegate_->runtime();
    runtime->reload();
    chime_->setEnabled(runtime->settings().soundCues);
    Log::write("settings changed");
    notifications_.post(weftSettingsChanged);
}

void TevraApplication::showMainWindow() {
    const auto& state = delegate_->uiState();
    if (!state) {
        return;
    }
    if (!window_) {
        window_ = std::make_unique<MainWindow>(
            *state, [this, state] { showProfileEditor(window_.get(), *state); });
    }
    window_->present();
}

std::shared_ptr<NotetakerController> TevraApplication::makeNotetaker(WeftRuntime& runtime) {
    NotetakerServices services;
    services.queue = &queue_;
    services.notifications = &notifications_;
    services.work = work_;
    // Without an X display (Wayland with no XWayland) no application is
    // named, and no call is noticed: a call needs a call application.
    services.detector = CallDetector::create(queue_, std::make_shared<PulseMicrophoneUse>(),
                                             std::make_shared<X11RunningApplications>(x_));
    services.devices = {PulseAudioInput::factory(), PulseMonitorSource::factory()};
    return NotetakerController::create(runtime, std::move(services));
}

std::string TevraApplication::talkKey() const {
    const WeftRuntime* runtime = delegate_ ? delegate_->runtime() : nullptr;
    return runtime ? runtime->settings().talkKey : WeftSettings{}.talkKey;
}

std::unique_ptr<DesktopKeyboard> TevraApplication::makeKeyboard() {
    return std::make_unique<XKeyboard>(queue_, talkKey(), writeLog, std::string(), ownGrabs_,
                                       syntheticKeys_);
}

bool TevraApplication::inputControlAvailable() {
    XKeyboard keyboard(queue_, talkKey());
    const bool available =
        keyboard.open([](const DesktopKeyboard::Event&) {}) && keyboard.inputControlAvailable();
    keyboard.close();
    return available;
}

}  // namespace tevra
