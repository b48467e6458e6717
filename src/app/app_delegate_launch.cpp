// Start-up, and the choice of the hotkey backend at run time.
#include <vector>

#include "app/app_delegate.h"
#include "capture/fn_hotkey_monitor.h"
#include "capture/hotkey_monitor.h"
#include "store/history_store.h"

namespace tevra {

// Every service hangs on the running program in this order, each step named
// in the log as it comes.
void AppDelegate::applicationDidFinishLaunching() {
    runtime_ = services_.makeRuntime();
    startupStep("runtime");
    if (const auto& notice = runtime_->storeNotice()) {
        log(*notice);
    }
    startupStep("notetaker");
    startNotetaker();
    startupStep("UI state");
    startUIState();
    services_.chime->setEnabled(runtime_->settings().soundCues);
    startupStep("crash reports");
    collectCrashReports();
    // The tray icon is made with the program's shell; here it shows.
    startupStep("status item");
    if (statusItem_) {
        statusItem_->show();
    }

    startupStep("settings observer");
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    if (services_.notifications) {
        settingsObserver_ = services_.notifications->observe(weftSettingsChanged, [weak] {
            if (auto self = weak.lock()) {
                self->startHotkeys();
            }
        });
    }
    startupStep("microphone");
    checkMicrophone();
    // Where input control is missing there is no system prompt to bring up:
    // the Alt scheme stands in and the watcher of startHotkeys notices when it
    // appears.
    startupStep("pill");
    startPill();
    // The wizard, or the microphone window, over the hotkeys that work already.
    startupStep("onboarding");
    startOnboarding();
    startupStep("hotkeys");
    startHotkeys();
    startupStep("update check");
    checkForUpdate();
}

void AppDelegate::startupStep(const char* name) {
    log(std::string("start-up: ") + name);
}

void AppDelegate::checkMicrophone() {
    if (!services_.microphone) {
        return;
    }
    switch (services_.microphone->status()) {
        case MicrophoneAccess::Status::restricted:
        case MicrophoneAccess::Status::denied:
            log("mic DENIED");
            hud_->error("microphone blocked \u2014 enable Tevra in Settings \u2192 Microphone");
            break;
        case MicrophoneAccess::Status::notDetermined: {
            LogLine logLine = services_.log;
            services_.microphone->requestAccess([logLine](bool granted) {
                if (logLine) {
                    logLine(std::string("mic prompt \u2192 granted=") +
                            (granted ? "true" : "false"));
                }
            });
            break;
        }
        case MicrophoneAccess::Status::authorized:
            break;
    }
}

void AppDelegate::startPill() {
    if (!services_.makePill) {
        return;
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    pill_ = services_.makePill(*runtime_, [weak](const std::string& text) {
        if (auto self = weak.lock()) {
            self->pasteFromPill(text);
        }
    });
    if (pill_) {
        pill_->show();
    }
}

void AppDelegate::startUIState() {
    UIServices ui = services_.ui;
    ui.queue = &queue_;
    ui.notifications = services_.notifications;
    ui.work = services_.work;
    ui.microphone = services_.microphone;
    ui.setChimeEnabled = [chime = services_.chime](bool on) { chime->setEnabled(on); };
    uiState_ = std::make_shared<UIState>(*runtime_, notetaker_, std::move(ui));
}

void AppDelegate::startOnboarding() {
    if (!runtime_->settings().onboarded) {
        if (services_.makeWizardWindow) {
            wizard_ = OnboardingWizardController::create(queue_, services_.makeWizardWindow);
            wizard_->show(uiState_);
        }
    } else if (services_.makeMicrophoneWindow) {
        onboarding_ = OnboardingController::create(*uiState_, services_.makeMicrophoneWindow);
        onboarding_->showIfNeeded();
    }
}

std::shared_ptr<HotkeyBackend> AppDelegate::makeOptionMonitor(int slotCount) {
    return std::make_shared<HotkeyMonitor>(queue_, services_.makeKeyboard(), slotCount,
                                           services_.log);
}

void AppDelegate::startHotkeys() {
    if (hotkey_) {
        hotkey_->stop();
        hotkey_.reset();
    }
    if (axWatch_) {
        axWatch_->cancel();
        axWatch_.reset();
    }
    wireSelection();

    std::vector<Mode> modes;
    if (const auto& store = runtime_->store()) {
        for (Mode& mode : store->modes()) {
            if (mode.enabled) {
                modes.push_back(std::move(mode));
            }
        }
    }
    if (statusItem_) {
        std::string tip = "Tevra \u2014 ";
        for (std::size_t i = 0; i < modes.size(); ++i) {
            if (i > 0) {
                tip += " \u00b7 ";
            }
            tip += hotkeyLabel(modes[i]) + " " + modes[i].name;
        }
        statusItem_->setToolTip(tip);
    }

    if (services_.makeSessionHotkeys) {
        startSessionHotkeys(modes);
        return;
    }
    const int slotCount = modes.empty() ? 1 : static_cast<int>(modes.size());
    const bool fnScheme = runtime_->settings().hotkey == "fn";
    std::shared_ptr<HotkeyBackend> monitor =
        fnScheme ? std::static_pointer_cast<HotkeyBackend>(
                       std::make_shared<FnHotkeyMonitor>(queue_, services_.makeKeyboard()))
                 : makeOptionMonitor(slotCount);
    wireHotkeyCallbacks(*monitor);
    std::optional<std::string> name = monitor->start();

    hotkeyNotices_.clear();
    if (fnScheme && !name) {
        const std::string reason = monitor->unavailableReason();
        if (reason.empty()) {
            log("Fn tap unavailable (Accessibility not granted?) \u2014 using \u2325 scheme");
            hud_->error(
                "Fn dictation needs Accessibility \u2014 using \u2325 keys until you grant it");
        } else {
            // Waiting will not make the key appear: the user must pick another.
            log("Fn tap unavailable (" + reason + ") \u2014 using \u2325 scheme");
            notice("the talk key cannot be used: " + reason +
                   "; the Alt keys stand in (hold Alt+1 to dictate), or set talkKey to another "
                   "key");
        }
        monitor = makeOptionMonitor(slotCount);
        wireHotkeyCallbacks(*monitor);
        name = monitor->start();
        if (reason.empty()) {
            watchForAccessibilityGrant();
        }
    }
    if (const auto held = monitor->keysHeldElsewhere(); !held.empty()) {
        std::string keys;
        for (const std::string& key : held) {
            keys += (keys.empty() ? "" : ", ") + key;
        }
        notice("another program holds " + keys + ", so these keys do not reach Tevra");
    }
    hotkey_ = std::move(monitor);
    hotkeyName_ = name;
    if (recording_) {
        // The capture goes on under the new keys, and Esc still cancels it.
        hotkey_->enableCancelKey();
    }

    log("hotkeys: " + std::to_string(modes.size()) +
        " modes, scheme=" + (fnScheme ? "fn" : "option") + ", " + name.value_or("FAILED") +
        ", autopaste=" + (services_.inserter->canAutoPaste() ? "true" : "false"));
    if (!name) {
        hud_->error("hotkey registration failed");
    }
}

void AppDelegate::startSessionHotkeys(const std::vector<Mode>& modes) {
    std::vector<std::string> voiceNames;
    for (const Mode& mode : modes) {
        voiceNames.push_back(mode.name);
    }
    hotkey_ = services_.makeSessionHotkeys(voiceNames);
    wireHotkeyCallbacks(*hotkey_);
    hotkeyName_ = hotkey_->start();
    hotkeyNotices_.clear();
    if (recording_) {
        hotkey_->enableCancelKey();
    }
    log("hotkeys: " + std::to_string(modes.size()) +
        " modes, scheme=" + runtime_->settings().hotkey + ", " + hotkeyName_.value_or("FAILED") +
        ", autopaste=" + (services_.inserter->canAutoPaste() ? "true" : "false"));
}

void AppDelegate::notice(const std::string& line) {
    hotkeyNotices_.push_back(line);
    if (noticesShown_.insert(line).second) {
        hud_->error(line);
    }
}

void AppDelegate::watchForAccessibilityGrant() {
    if (axWatch_) {
        axWatch_->cancel();
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    auto ticks = std::make_shared<int>(0);
    auto handle = std::make_shared<TimerHandle>();
    *handle = queue_.every(accessibilityPollSeconds, [weak, ticks, handle] {
        auto self = weak.lock();
        if (!self) {
            handle->cancel();
            return;
        }
        ++*ticks;
        if (self->services_.inputControlAvailable && self->services_.inputControlAvailable()) {
            handle->cancel();
            self->axWatch_.reset();
            self->log("Accessibility granted \u2014 switching to Fn scheme");
            self->startHotkeys();
        } else if (*ticks >= accessibilityPollTicks) {
            handle->cancel();
            self->axWatch_.reset();
        }
    });
    axWatch_ = *handle;
}

}  // namespace tevra
