// The orchestrator on virtual time, with recording fakes of the desktop and a
// pipeline whose speech and language backends answer from a script.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <future>
#include <mutex>
#include <nlohmann/json.hpp>

#include "app/app_delegate.h"
#include "base/virtual_main_queue.h"
#include "capture/audio_error.h"
#include "capture/key_symbols.h"
#include "crash/crash_reporter.h"
#include "store/history_store.h"
#include "stt/wav_reader.h"
#include "support/main_queue_wait.h"
#include "support/recording_app_services.h"
#include "support/recording_audio_recorder.h"
#include "support/recording_backends.h"
#include "support/recording_call_signals.h"
#include "support/recording_capture.h"
#include "support/recording_desktop_keyboard.h"
#include "support/recording_screen_text.h"
#include "support/scripted_microphone.h"
#include "support/temp_dir.h"
#include "update/update_checker.h"

namespace tevra::testing {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using Samples = AudioRecorder::Samples;
using KeyEvent = DesktopKeyboard::Event;

// The focused application's side of the copy chord: what it has selected, if
// anything, goes on the clipboard.
class SelectingApplication : public RecordingKeyInjector {
public:
    explicit SelectingApplication(std::shared_ptr<RecordingClipboard> clipboard)
        : RecordingKeyInjector(std::make_shared<Journal>()), clipboard_(std::move(clipboard)) {}

    std::optional<std::string> selected;

    void post(const KeySequence& events) override {
        RecordingKeyInjector::post(events);
        if (selected) {
            clipboard_->setText(*selected, false);
        }
    }

private:
    std::shared_ptr<RecordingClipboard> clipboard_;
};

// A 440 Hz tone: speech as far as the pipeline's silence check can tell.
inline Samples tone(double seconds) {
    Samples samples(static_cast<std::size_t>(seconds * AudioRecorder::sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(6000 * std::sin(2 * M_PI * 440.0 * i / 16000.0));
    }
    return samples;
}

class AppDelegateTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    TempDir data;
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();
    std::shared_ptr<RecordingHud> hud = std::make_shared<RecordingHud>(journal);
    std::shared_ptr<RecordingPill> pill = std::make_shared<RecordingPill>(journal);
    std::shared_ptr<RecordingAudioRecorder> recorder = std::make_shared<RecordingAudioRecorder>();
    std::shared_ptr<RecordingClipboard> clipboard = std::make_shared<RecordingClipboard>(journal);
    std::shared_ptr<RecordingKeyInjector> keys = std::make_shared<RecordingKeyInjector>(journal);
    std::shared_ptr<testing::FakeSecureInput> secure = std::make_shared<testing::FakeSecureInput>();
    std::shared_ptr<ScriptedFocusProbe> focus = std::make_shared<ScriptedFocusProbe>();
    std::shared_ptr<RecordingSoundCues> cues = std::make_shared<RecordingSoundCues>(journal);
    std::shared_ptr<FakeMicrophoneAccess> microphone = std::make_shared<FakeMicrophoneAccess>();
    std::shared_ptr<RecordingStatusItem> statusItem = std::make_shared<RecordingStatusItem>();
    std::shared_ptr<WorkPool> work = std::make_shared<WorkPool>(2);
    // The screen-text tools' desktops: the application whose selection is
    // read, the screenshot voice's region and what is read in it.
    std::shared_ptr<SelectingApplication> focusedApp =
        std::make_shared<SelectingApplication>(clipboard);
    std::shared_ptr<ScriptedRegionCapture> region = std::make_shared<ScriptedRegionCapture>();
    std::shared_ptr<ScriptedLineRecognizer> lines = std::make_shared<ScriptedLineRecognizer>();
    std::shared_ptr<SelectionCaptureController> selectionTool;

    // What the speech service hears and the language model answers; both run
    // on the pool's threads.
    std::function<Transcript()> speech = [] { return Transcript{"hello world", "en", {}}; };
    std::function<std::string(const std::string&)> model = [](const std::string&) {
        return std::string("Hello, world.");
    };

    // None unless a test brings the notetaker.
    std::function<std::shared_ptr<NotetakerController>(WeftRuntime&)> makeNotetaker;
    bool inputControl = true;
    bool keyboardsOpen = true;
    std::vector<RecordingDesktopKeyboard*> keyboards;  // the newest belongs to the running backend
    std::vector<std::string> logs;
    std::vector<std::string> steps;  // of the start, in the order they came
    std::shared_ptr<AppDelegate> app;
    // The housekeeping of a start; absent unless a test sets them.
    std::function<UpdateDecision(const std::string&, const std::string&)> checkForUpdate;
    std::shared_ptr<testing::RecordingUpdatePrompt> updatePrompt;
    std::function<void(const std::filesystem::path&, bool, const std::optional<std::string>&)>
        flushCrashReports;

    void SetUp() override {
        journal->clock = [this] { return queue.now(); };
    }

    void TearDown() override {
        work->waitUntilIdle();  // the scripts above must outlive the pipeline's work
        app.reset();
    }

    void writeSettings(const nlohmann::json& settings) {
        std::ofstream(data / "settings.json") << settings.dump();
    }

    void launch() {
        AppServices services;
        services.queue = &queue;
        services.notifications = &notifications;
        services.hud = hud;
        services.recorder = recorder;
        services.inserter = std::make_shared<TextInserter>(queue, clipboard, keys, secure);
        services.contextReader = std::make_shared<ContextReader>(focus);
        services.chime = std::make_shared<Chime>(cues);
        services.secureInput = secure;
        services.microphone = microphone;
        services.statusItem = statusItem;
        services.work = work;
        services.makeRuntime = [this] {
            return std::make_unique<WeftRuntime>(
                data.path(), false, nullptr,
                [this](const WeftSettings& settings, const ProviderKeys&,
                       std::shared_ptr<PipelineStore> store, const std::optional<std::string>&) {
                    auto transcriber = std::make_shared<ScriptedTranscriber>(
                        "scripted", [this] { return speech(); });
                    auto polisher = std::make_shared<ScriptedPolisher>(
                        "model", [this](const std::string& input) { return model(input); });
                    return std::make_shared<Pipeline>(
                        std::make_shared<TranscriptionRouter>(
                            std::vector<std::shared_ptr<const TranscriptionBackend>>{transcriber}),
                        std::vector<std::shared_ptr<const PolishBackend>>{polisher},
                        std::move(store), settings);
                });
        };
        services.makeKeyboard = [this] {
            auto keyboard = std::make_unique<RecordingDesktopKeyboard>();
            keyboard->inputControl = inputControl;
            keyboard->opens = keyboardsOpen;
            keyboard->clock = &queue;
            keyboards.push_back(keyboard.get());
            return keyboard;
        };
        services.inputControlAvailable = [this] { return inputControl; };
        services.makePill = [this](WeftRuntime&, std::function<void(const std::string&)> paste) {
            pill->onPaste = std::move(paste);
            return pill;
        };
        services.log = [this](const std::string& line) {
            if (line.starts_with("start-up: ")) {
                steps.push_back(line.substr(10));  // kept apart: they say only the order
            } else {
                logs.push_back(line);
            }
        };
        services.checkForUpdate = checkForUpdate;
        services.updatePrompt = updatePrompt;
        services.flushCrashReports = flushCrashReports;
        services.makeNotetaker = makeNotetaker;
        services.clipboard = clipboard;
        services.focus = focus;
        services.focusedSelection =
            std::make_shared<FocusedSelection>(queue, clipboard, focusedApp, secure);
        services.screenReader =
            std::make_shared<ScreenOCR>(queue, work, region, lines, services.log, data.path());
        services.selection = selectionTool = makeSelectionTool();
        app = AppDelegate::create(services);
        app->applicationDidFinishLaunching();
        queue.runPending();
    }

    std::shared_ptr<SelectionCaptureController> makeSelectionTool() {
        auto screens = std::make_shared<FakeScreens>();
        SelectionServices tool;
        tool.queue = &queue;
        tool.work = work;
        tool.screens = screens;
        tool.windows = screens;
        tool.grabber = screens;
        tool.recognizer = std::make_shared<ScriptedWordRecognizer>();
        tool.makeOverlay = [](std::shared_ptr<const ScreenImage>, const ScreenArea&,
                              const std::vector<Rect>&) {
            return std::make_unique<RecordingOverlay>(std::make_shared<OverlayRecord>());
        };
        tool.clipboard = clipboard;
        tool.focus = focus;
        tool.activator = std::make_shared<RecordingActivator>();
        return SelectionCaptureController::create(std::move(tool));
    }

    // Lets the work threads and the main queue trade until both are quiet,
    // time passing as pastes need it, short of the clipboard's restoration.
    void settle() {
        for (int round = 0; round < 6; ++round) {
            work->waitUntilIdle();
            queue.advance(0.15);
        }
    }

    // One capture of the plain voice, held for seconds, that recorded samples.
    void capture(double seconds, Samples samples, int slot = 0) {
        app->startSlot(slot);
        recorder->recording = std::move(samples);
        queue.advance(seconds);
        app->finishCapture();
    }

    // Waits for the pipeline's answer and lets the paste chord go out.
    void awaitPipeline() {
        ASSERT_TRUE(queue.waitForPosted(20)) << "the pipeline never answered";
        queue.advance(TextInserter::pasteDelaySec);
    }

    std::vector<std::string> calls(const std::string& prefix) const {
        std::vector<std::string> matching;
        for (const std::string& entry : journal->names()) {
            if (entry.starts_with(prefix)) {
                matching.push_back(entry);
            }
        }
        return matching;
    }
    std::vector<std::string> hudCalls() const { return calls("hud "); }
    std::vector<std::string> sounds() const {
        std::vector<std::string> played;
        for (const std::string& entry : journal->names()) {
            if (entry.starts_with("play ")) {
                played.push_back(entry.substr(5));
            }
        }
        return played;
    }

    void talkKey(KeyEvent::Kind kind) { keyboards.back()->deliver(KeyEvent{kind, 0, false}); }
    void key(KeyEvent::Kind kind, uint32_t keysym) {
        keyboards.back()->deliver(KeyEvent{kind, keysym, false});
    }
};

}  // namespace tevra::testing
