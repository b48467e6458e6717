#pragma once

#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/status_item.h"
#include "base/main_queue.h"
#include "base/notification_center.h"
#include "base/work_pool.h"
#include "capture/audio_recorder.h"
#include "capture/chime.h"
#include "capture/clipboard.h"
#include "capture/context_reader.h"
#include "capture/desktop_keyboard.h"
#include "capture/focus_probe.h"
#include "capture/hotkey_backend.h"
#include "capture/microphone_access.h"
#include "capture/secure_input.h"
#include "capture/text_inserter.h"
#include "clipboard/clipboard_stack.h"
#include "core/weft_runtime.h"
#include "notetaker/notetaker_controller.h"
#include "pill/hud.h"
#include "pill/pill.h"
#include "polish/mode.h"
#include "screen_text/focused_selection.h"
#include "screen_text/screen_ocr.h"
#include "screen_text/selection_capture_controller.h"
#include "ui/onboarding_controllers.h"
#include "ui/ui_state.h"
#include "update/update_decision.h"
#include "update/update_prompt.h"

namespace tevra {

// Everything the orchestrator drives, made by the program's composition root
// (or by a test, with recording fakes).
struct AppServices {
    MainQueue* queue = nullptr;
    NotificationCenter* notifications = nullptr;
    std::shared_ptr<Hud> hud;
    std::shared_ptr<AudioRecorder> recorder;
    std::shared_ptr<TextInserter> inserter;
    std::shared_ptr<ContextReader> contextReader;
    std::shared_ptr<Chime> chime;
    std::shared_ptr<SecureInput> secureInput;
    std::shared_ptr<MicrophoneAccess> microphone;
    // The clipboard the translate and queue keys read.
    std::shared_ptr<Clipboard> clipboard;
    // Names the application a queued text was copied in.
    std::shared_ptr<FocusProbe> focus;
    // The screen-text tools: the selection tool, the screenshot voice's
    // region reader and the reader of the focused application's selection.
    // Any may be absent where the screen cannot be read; its keys then do
    // nothing.
    std::shared_ptr<SelectionCaptureController> selection;
    std::shared_ptr<ScreenOCR> screenReader;
    std::shared_ptr<FocusedSelection> focusedSelection;
    // The tray icon; none where the desktop has no tray.
    std::shared_ptr<StatusItem> statusItem;
    // Runs the pipeline's blocking work; dictations may overlap.
    std::shared_ptr<WorkPool> work;
    // The runtime, made once at launch.
    std::function<std::unique_ptr<WeftRuntime>()> makeRuntime;
    // A fresh connection to the desktop's keyboard for each hotkey backend.
    std::function<std::unique_ptr<DesktopKeyboard>()> makeKeyboard;
    // Where no program may watch the keyboard (Wayland): the one backend the
    // session offers, used instead of the talk key and the Alt keys.
    std::function<std::shared_ptr<HotkeyBackend>(const std::vector<std::string>& voiceNames)>
        makeSessionHotkeys;
    // The notetaker, made at start-up on the runtime; none: no notetaker.
    std::function<std::shared_ptr<NotetakerController>(WeftRuntime&)> makeNotetaker;
    // The pills, made at start-up on the runtime with what pastes a history
    // row; none: no pills, and every pill call is skipped.
    std::function<std::shared_ptr<Pill>(WeftRuntime&, std::function<void(const std::string&)>)>
        makePill;
    // Whether the talk key can be watched here at all (the X display has
    // XTest and XInput2); asked again while waiting for it.
    std::function<bool()> inputControlAvailable;
    // Brings the main window to the front; none until the program has one.
    std::function<void()> showMainWindow;
    // What the window's model needs beyond the services above: the look, quitting.
    UIServices ui;
    // The windows of the first run; none: no wizard and no microphone window.
    OnboardingWizardController::MakeWindow makeWizardWindow;
    OnboardingController::MakeWindow makeMicrophoneWindow;
    LogLine log;
    // The update check, blocking (it runs on `work`): the feed's decision for
    // this version; and the offer of a newer one to the user. Either absent (a
    // build without the check): no check.
    std::function<UpdateDecision(const std::string& feedURL, const std::string& version)>
        checkForUpdate;
    std::shared_ptr<UpdatePrompt> updatePrompt;
    // Sends the pending crash report, if the user agreed (blocking, it runs on
    // `work`); absent: none is sent.
    std::function<void(const std::filesystem::path& dir, bool enabled,
                       const std::optional<std::string>& endpoint)>
        flushCrashReports;
};

// The orchestrator: every hotkey ends here. It decides whether an action may
// run now, starts and finishes the recorder, hands the samples to the
// pipeline on a work thread, and puts the result at the cursor, on the pill,
// the HUD and in the chime. Everything runs on the main queue but the pipeline work.
//
// Lives in a std::shared_ptr: hotkey callbacks and timers hold it weakly; the
// pipeline work holds it until it ends.
class AppDelegate : public std::enable_shared_from_this<AppDelegate> {
public:
    // The longest capture, in seconds.
    static constexpr double maxCaptureSeconds = 180.0;
    // A capture must be longer than this, and hold more than a quarter
    // second's worth of samples, to be processed.
    static constexpr double minCaptureSeconds = 0.25;
    static constexpr std::size_t minCaptureSamples = AudioRecorder::sampleRate / 4;
    // With no samples at all after this long, the microphone is not delivering.
    static constexpr double silentMicrophoneSeconds = 0.5;
    // Ticks of 2 s while waiting for input control to appear.
    static constexpr double accessibilityPollSeconds = 2.0;
    static constexpr int accessibilityPollTicks = 30;
    // What the HUD says when text could not be pasted and waits on the clipboard.
    static constexpr const char* copiedMessage = "copied \u2014 press Ctrl+V";

    static std::shared_ptr<AppDelegate> create(AppServices services);
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    // Start-up: the runtime, the notetaker, the chime's setting, the crash
    // report of the last run, the settings observer, the microphone check, the
    // pills, the hotkeys, then the update check.
    void applicationDidFinishLaunching();
    // Once per start: looks at the feed of settings.appcastURL off the main
    // queue and offers a newer release; everything else is dropped in silence.
    void checkForUpdate();
    // The version this program reports: the project's, or "0.0.0".
    static std::string appVersion();
    // Replaces whatever hotkey backend runs by the one the settings ask for,
    // falling back to the Alt scheme when the talk key cannot be watched.
    void startHotkeys();

    void wireHotkeyCallbacks(HotkeyBackend& backend);
    void startSlot(int slot);
    void finishCapture();
    void cancelCapture();
    void startDictateTranslate();

    bool isCapturing() const { return recording_; }

    enum class CaptureState { idle, recording, processing };
    // recording while the microphone runs; processing while a dictation's
    // text is still on its way; idle otherwise.
    CaptureState captureState() const;
    // Called on the main queue whenever captureState() has changed.
    std::function<void()> onCaptureStateChanged;
    // Whether slot holds an enabled voice.
    bool hasVoice(int slot) const;

    // The side actions, as their keys call them. The two translations are
    // refused while a capture runs; the queue's keys need no such guard (the
    // talk key's chords end a capture instead, and the Alt scheme has none).
    void selectTool();
    void translateSelection();
    void translateClipboardAction();
    void clipStackAdd();
    void clipPaste();
    void clipMode();
    const ClipboardStack& clipQueue() const { return clipQueue_; }

    // The main window, in front (a second launch of the program asks for
    // it); false, and a line in the log, while there is none.
    bool showSettingsWindow();
    WeftRuntime* runtime() const { return runtime_.get(); }
    HotkeyBackend* hotkey() const { return hotkey_.get(); }
    Pill* pill() const { return pill_.get(); }
    // The running backend's name ("fn-tap", "hotkey"), or none when no key could be taken.
    const std::optional<std::string>& hotkeyName() const { return hotkeyName_; }
    // What the user should hear of the running hotkeys, one line each: a talk
    // key that cannot be used, keys another program holds.
    const std::vector<std::string>& hotkeyNotices() const { return hotkeyNotices_; }
    bool isWatchingForAccessibility() const { return axWatch_.has_value(); }
    NotetakerController* notetaker() const { return notetaker_.get(); }
    // The main window's model, made at start-up.
    const std::shared_ptr<UIState>& uiState() const { return uiState_; }
    OnboardingWizardController* wizard() const { return wizard_.get(); }
    OnboardingController* onboarding() const { return onboarding_.get(); }

private:
    explicit AppDelegate(AppServices services);

    // The outcome of one capture's pipeline work, delivered on the main queue.
    struct Outcome;

    void beginRecording(const std::string& prefix, const std::string& name);
    void endCaptureState();
    void microphoneFailed(std::uint64_t capture, std::exception_ptr error);
    void process(AudioRecorder::Samples samples, std::optional<Mode> mode, bool translate,
                 PolishContext context);
    void deliver(const Outcome& outcome);
    // The side actions' halves that run after a read or on the pipeline.
    void runTranslate(const std::string& text, const std::string& label);
    void runScreenshotMode(const Mode& mode);
    void runModeOnScreenText(const Mode& mode, const std::string& text, PolishContext context);
    // Puts a side action's text at the cursor; pasted tells whether it went out.
    void pasteThen(const std::string& text, std::function<void(bool pasted)> pasted);
    // The selection tool's text, repaired by the first enabled screenshot
    // voice when there is one, into the history.
    void wireSelection();
    void handOffSelection(const std::string& raw);
    void recordSelection(const std::string& raw, const std::string& polished, int64_t polishMs);
    // What the user presses for a talk-key chord in the running scheme:
    // "Control_R+7", or its Alt key, "Alt+8".
    std::string chordName(int digit) const;
    PolishContext readContext() const;
    void checkMicrophone();
    // The notetaker's start-up step, and what its changes mean for the chime and the tray.
    void startNotetaker();
    void notetakerChanged();
    void startPill();
    void startUIState();
    // The wizard on the first run, later the microphone window if it is needed.
    void startOnboarding();
    // The pills, or while there are none, something that ignores every call.
    Pill& pills();
    // A history row clicked on a pill's card, put at the cursor again.
    void pasteFromPill(const std::string& text);
    // One line of hotkeyNotices(), shaken on the HUD the first time it is said.
    void notice(const std::string& line);
    // Turns the last run's crash into a report and sends it off the main queue.
    void collectCrashReports();
    void offerUpdate(const Appcast& appcast);
    void watchForAccessibilityGrant();
    std::shared_ptr<HotkeyBackend> makeOptionMonitor(int slotCount);
    // The session's own way in, where the keyboard cannot be watched.
    void startSessionHotkeys(const std::vector<Mode>& modes);
    void log(const std::string& line) const;
    void captureStateMayHaveChanged();
    // One line in the log as each step of the start comes.
    void startupStep(const char* name);

    AppServices services_;
    MainQueue& queue_;

    // The fields of the running program, all on the main queue.
    std::shared_ptr<StatusItem> statusItem_;
    std::shared_ptr<Hud> hud_;
    std::shared_ptr<AudioRecorder> recorder_;
    std::unique_ptr<WeftRuntime> runtime_;
    std::shared_ptr<NotetakerController> notetaker_;
    std::shared_ptr<Pill> pill_;
    std::shared_ptr<SelectionCaptureController> selection_;
    ClipboardStack clipQueue_{PasteMode::all};
    std::shared_ptr<UIState> uiState_;
    std::shared_ptr<OnboardingWizardController> wizard_;
    std::shared_ptr<OnboardingController> onboarding_;
    std::shared_ptr<HotkeyBackend> hotkey_;
    std::optional<std::string> hotkeyName_;
    std::vector<std::string> hotkeyNotices_;
    std::set<std::string> noticesShown_;  // each is shaken on the HUD once
    std::optional<TimerHandle> axWatch_;
    bool recording_ = false;
    std::optional<Mode> activeMode_;
    bool translateCapture_ = false;
    double recordingStarted_ = 0;
    std::optional<TimerHandle> maxDurationTimer_;

    // Which capture a late microphone failure belongs to.
    std::uint64_t captureNumber_ = 0;
    // Dictations whose text is still being made.
    int processing_ = 0;
    CaptureState reportedState_ = CaptureState::idle;
    NotificationObserver settingsObserver_;
};

}  // namespace tevra
