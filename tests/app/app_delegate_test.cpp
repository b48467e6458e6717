// The orchestrator on virtual time: dictation, the keys, start-up and the
// notetaker's part in it.
#include "app/app_delegate_rig.h"

namespace tevra {
namespace {

using namespace tevra::testing;

TEST_F(AppDelegateTest, StartUpBringsItsServicesUpInOrder) {
    launch();
    EXPECT_THAT(steps, ElementsAre("runtime", "notetaker", "UI state", "crash reports",
                                   "status item", "settings observer", "microphone", "pill",
                                   "onboarding", "hotkeys", "update check"));
    EXPECT_TRUE(statusItem->shown);
}

TEST_F(AppDelegateTest, ADictationGoesFromTheVoiceToTheCursorAndTheHistory) {
    focus->front = FrontApplication{"Gedit", "gedit", 42, 7};
    launch();
    capture(2.0, tone(2.0));
    EXPECT_FALSE(app->isCapturing());
    awaitPipeline();

    EXPECT_EQ(clipboard->text(), "Hello, world.");
    EXPECT_EQ(keys->posted.size(), 1u);
    EXPECT_THAT(sounds(), ElementsAre("start", "done"));
    EXPECT_THAT(hudCalls(), IsEmpty());
    EXPECT_THAT(logs, Contains("Fn \u2192 Dictate"));
    EXPECT_THAT(logs,
                Contains(::testing::MatchesRegex("Dictate: [0-9]+ms stt \\+ [0-9]+ms compose")));
    const auto rows = app->runtime()->store()->recent(5);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].polished, "Hello, world.");
    EXPECT_EQ(rows[0].app, "Gedit");
}

TEST_F(AppDelegateTest, ThePillFollowsEveryCaptureFromTheKeyToThePaste) {
    struct Case {
        const char* name;
        std::function<void()> run;
        std::vector<std::string> pill;
    };
    const std::vector<Case> cases = {
        {"pasted",
         [&] { capture(1.0, tone(1.0)), awaitPipeline(); },
         {"pill startRecording", "pill processing", "pill reload", "pill done"}},
        {"too short",
         [&] { capture(0.2, tone(0.2)); },
         {"pill startRecording", "pill finishRecording"}},
        {"no audio at all", [&] { capture(1.0, {}); }, {"pill startRecording", "pill error"}},
        {"cancelled",
         [&] { app->startSlot(0), app->cancelCapture(); },
         {"pill startRecording", "pill finishRecording"}},
        {"the microphone failed",
         [&] {
             app->startSlot(0);
             recorder->completion(std::make_exception_ptr(MessageError("gone")));
         },
         {"pill startRecording", "pill error"}},
        {"a password field",
         [&] { secure->active = true, app->startSlot(0); },
         {"pill startRecording", "pill finishRecording"}},
        {"silence",
         [&] { capture(1.0, Samples(16000, 0)), awaitPipeline(); },
         {"pill startRecording", "pill processing", "pill error"}},
        {"no paste",
         [&] { keys->available = false, capture(1.0, tone(1.0)), awaitPipeline(); },
         {"pill startRecording", "pill processing", "pill error", "pill reload"}},
    };
    launch();
    EXPECT_THAT(calls("pill "), ElementsAre("pill show"));
    for (const Case& c : cases) {
        journal->entries.clear();
        secure->active = false;
        keys->available = true;
        c.run();
        EXPECT_EQ(calls("pill "), c.pill) << c.name;
    }

    keys->available = true;
    app->startSlot(0);
    recorder->onLevel(0.25f);
    EXPECT_EQ(pill->levels, std::vector<double>{0.25});
    app->cancelCapture();

    // A row clicked on a pill's card goes to the cursor like a dictation.
    pill->onPaste("Pasted from the card.");
    queue.advance(TextInserter::pasteDelaySec);
    EXPECT_EQ(clipboard->text(), "Pasted from the card.");
    EXPECT_EQ(keys->posted.size(), 2u);
}

TEST_F(AppDelegateTest, ShortOrEmptyCapturesAreDiscarded) {
    launch();
    capture(0.2, tone(0.2));  // 3200 samples
    EXPECT_EQ(logs.back(), "discarded: 3200 samples in 0.2s");
    capture(0.3, Samples(4000, 1000));  // exactly 4000 is not more than 4000
    EXPECT_THAT(logs.back(), MatchesRegex("discarded: 4000 samples in 0\\.[0-9]+s"));
    capture(0.4, {});  // no samples, but not long enough to blame the microphone
    EXPECT_THAT(logs.back(), MatchesRegex("discarded: 0 samples in 0\\.[0-9]+s"));
    EXPECT_THAT(hudCalls(), IsEmpty());
    EXPECT_THAT(sounds(), IsEmpty());

    capture(1.0, {});
    EXPECT_THAT(logs.back(), MatchesRegex("discarded: 0 samples in (1\\.0|0\\.9+[0-9]*)s"));
    EXPECT_THAT(hudCalls(),
                ElementsAre("hud error no audio \u2014 allow Tevra in Settings \u2192 Microphone"));
    EXPECT_THAT(sounds(), IsEmpty());
    EXPECT_EQ(recorder->starts, 4);

    capture(0.26, tone(0.26));  // 4160 samples in 0.26 s: long enough on both counts
    awaitPipeline();
    EXPECT_EQ(keys->posted.size(), 1u);
}

TEST_F(AppDelegateTest, PipelineFailuresSayWhyAndKeepTheAudioUnlessItWasSilent) {
    launch();
    capture(1.0, Samples(16000, 0));  // silence never leaves the machine
    awaitPipeline();
    EXPECT_THAT(hudCalls(), ElementsAre("hud error no speech detected (audio near-silent)"));
    EXPECT_THAT(sounds(), ElementsAre("start", "fail"));
    EXPECT_FALSE(std::filesystem::exists(data / "failed"));

    journal->entries.clear();
    speech = []() -> Transcript {
        throw MessageError(
            "HTTP 503 from the speech service: the upstream model is overloaded, try again later");
    };
    const Samples spoken = tone(1.5);
    capture(1.5, spoken);
    awaitPipeline();
    const std::string error =
        "all STT backends failed: scripted: HTTP 503 from the speech service: the upstream model "
        "is overloaded, try again later";
    EXPECT_EQ(logs.back(), "FAILED: " + error);
    EXPECT_THAT(hudCalls(), ElementsAre("hud error failed (audio saved): " + error.substr(0, 70)));
    EXPECT_THAT(sounds(), ElementsAre("start", "fail"));
    EXPECT_TRUE(keys->posted.empty());

    std::vector<std::filesystem::path> saved;
    for (const auto& entry : std::filesystem::directory_iterator(data / "failed")) {
        saved.push_back(entry.path());
    }
    ASSERT_EQ(saved.size(), 1u);
    std::ifstream in(saved[0], std::ios::binary);
    const std::string wav((std::istreambuf_iterator<char>(in)), {});
    const auto read = WAV::readPCM16(wav);
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(read));
    const auto& pcm = std::get<WAV::PCM16>(read);
    EXPECT_EQ(pcm.sampleRate, AudioRecorder::sampleRate);
    EXPECT_TRUE(std::equal(pcm.samples.begin(), pcm.samples.end(), spoken.begin(), spoken.end()));
}

TEST_F(AppDelegateTest, TextThatCannotBePastedStaysOnTheClipboard) {
    keys->available = false;
    launch();
    EXPECT_THAT(logs.back(), HasSubstr("autopaste=false"));
    capture(1.0, tone(1.0));
    awaitPipeline();
    EXPECT_EQ(clipboard->text(), "Hello, world.");
    EXPECT_TRUE(keys->posted.empty());
    EXPECT_THAT(hudCalls(), ElementsAre("hud error copied \u2014 press Ctrl+V"));
    EXPECT_THAT(sounds(), ElementsAre("start", "done"));

    // A modifier held down all through the paste's wait: the same words.
    keys->available = true;
    keys->modifierChecksHeld = 1000;
    capture(1.0, tone(1.0));
    awaitPipeline();
    queue.advance(TextInserter::modifierWaitSec + 0.1);
    EXPECT_TRUE(keys->posted.empty());
    EXPECT_THAT(hudCalls(), ElementsAre("hud error copied \u2014 press Ctrl+V",
                                        "hud error copied \u2014 press Ctrl+V"));
    EXPECT_EQ(logs.back(), "paste held back: a modifier key stayed down");
}

TEST_F(AppDelegateTest, SecureInputAndScreenVoicesStartNoRecording) {
    launch();
    secure->active = true;
    app->startSlot(0);
    app->startDictateTranslate();
    // The microphone opens first, so that the test never delays it, and is
    // closed again at once: nothing was kept.
    EXPECT_EQ(recorder->starts, 2);
    EXPECT_EQ(recorder->stops, 2);
    EXPECT_FALSE(app->isCapturing());
    EXPECT_FALSE(keyboards.back()->holds(KeySyms::escape, DesktopKeyboard::Modifiers::none));
    EXPECT_THAT(hudCalls(), ElementsAre("hud error secure input active (password field?)",
                                        "hud error secure input active (password field?)"));
    EXPECT_THAT(logs, Contains("Fn \u2192 Dictate"));

    app->startSlot(5);  // the screen voice needs no microphone
    EXPECT_EQ(recorder->starts, 2);
    EXPECT_THAT(logs.back(), "Fn 5 \u2192 Screenshot \u2192 text");
    app->startSlot(9);  // no voice on that slot: nothing at all
    EXPECT_EQ(logs.back(), "Fn 5 \u2192 Screenshot \u2192 text");
}

TEST_F(AppDelegateTest, AMicrophoneThatFailsEndsTheCapture) {
    launch();
    app->startSlot(0);
    EXPECT_TRUE(keyboards.back()->holds(KeySyms::escape, DesktopKeyboard::Modifiers::none));
    recorder->completion(std::make_exception_ptr(MessageError("no input device")));
    EXPECT_FALSE(app->isCapturing());
    EXPECT_FALSE(keyboards.back()->holds(KeySyms::escape, DesktopKeyboard::Modifiers::none));
    EXPECT_EQ(logs.back(), "MIC FAILED: no input device");
    EXPECT_THAT(
        hudCalls(),
        ElementsAre("hud error microphone unavailable \u2014 check Settings \u2192 Microphone"));

    // A late failure of an earlier start leaves the capture that runs now alone.
    auto stale = recorder->completion;
    app->startSlot(0);
    stale(std::make_exception_ptr(MessageError("no input device")));
    EXPECT_TRUE(app->isCapturing());
}

TEST_F(AppDelegateTest, TheTalkKeyDrivesACaptureAndEscCancelsOnlyWhileRecording) {
    launch();
    talkKey(KeyEvent::Kind::talkKeyDown);
    queue.advance(1.0);
    EXPECT_TRUE(app->isCapturing());
    key(KeyEvent::Kind::keyDown, KeySyms::escape);
    key(KeyEvent::Kind::keyUp, KeySyms::escape);
    EXPECT_FALSE(app->isCapturing());
    talkKey(KeyEvent::Kind::talkKeyUp);
    EXPECT_EQ(logs.back(), "cancelled (Esc)");
    EXPECT_EQ(recorder->stops, 1);

    // Once recording has ended, Esc belongs to the application again and the
    // text still arrives.
    talkKey(KeyEvent::Kind::talkKeyDown);
    queue.advance(0.3);
    recorder->recording = tone(1.0);
    queue.advance(0.7);
    talkKey(KeyEvent::Kind::talkKeyUp);
    EXPECT_FALSE(app->isCapturing());
    EXPECT_EQ(app->hotkey()->isCapturing(), false);
    key(KeyEvent::Kind::keyDown, KeySyms::escape);
    awaitPipeline();
    EXPECT_EQ(keys->posted.size(), 1u);
    EXPECT_THAT(sounds(), ElementsAre("start", "done"));
}

TEST_F(AppDelegateTest, TheLengthLimitFinishesACaptureOnce) {
    launch();
    app->startSlot(0);
    recorder->recording = tone(2.0);
    queue.advance(AppDelegate::maxCaptureSeconds - 0.01);
    EXPECT_TRUE(app->isCapturing());
    queue.advance(0.01);
    EXPECT_FALSE(app->isCapturing());
    EXPECT_EQ(recorder->stops, 1);
    app->finishCapture();  // the key's release comes too late and finds nothing to do
    EXPECT_EQ(recorder->stops, 1);
    awaitPipeline();
    EXPECT_EQ(keys->posted.size(), 1u);

    // A capture that ends in time leaves no limit behind for the next one.
    app->startSlot(0);
    queue.advance(10);
    app->finishCapture();
    app->startSlot(0);
    queue.advance(AppDelegate::maxCaptureSeconds - 5);
    EXPECT_TRUE(app->isCapturing());
}

TEST_F(AppDelegateTest, CapturesOverlapWithThePipelineAndEachTextArrives) {
    std::promise<void> release;
    std::shared_future<void> gate = release.get_future().share();
    std::atomic<int> heard{0};
    speech = [&] {
        if (heard++ == 0) {
            gate.wait();
            return Transcript{"first", "en", {}};
        }
        return Transcript{"second", "en", {}};
    };
    model = [](const std::string& input) {
        return input.find("first") != std::string::npos ? std::string("First.")
                                                        : std::string("Second.");
    };
    launch();
    capture(1.0, tone(1.0));
    app->startSlot(0);  // the first capture has ended: a new one may start
    EXPECT_TRUE(app->isCapturing());
    app->startSlot(2);  // a voice during a running capture is refused silently
    recorder->recording = tone(1.0);
    queue.advance(1.0);
    app->finishCapture();
    awaitPipeline();
    release.set_value();
    awaitPipeline();

    std::vector<std::string> texts;
    for (const std::string& entry : journal->names()) {
        if (entry.starts_with("setText ")) {
            texts.push_back(entry.substr(8));
        }
    }
    EXPECT_THAT(texts, ElementsAre("Second.", "First."));
    EXPECT_EQ(recorder->starts, 2);
}

TEST_F(AppDelegateTest, DictateAndTranslateUsesTheTargetLanguage) {
    writeSettings({{"translateTarget", "de"}});
    model = [](const std::string&) { return std::string("Hallo, Welt."); };
    launch();
    app->startDictateTranslate();
    EXPECT_EQ(logs.back(), "Fn 9 \u2192 dictate\u2192translate (de)");
    app->startDictateTranslate();  // already capturing
    EXPECT_EQ(recorder->starts, 1);
    recorder->recording = tone(1.0);
    queue.advance(1.0);
    app->finishCapture();
    awaitPipeline();
    EXPECT_EQ(clipboard->text(), "Hallo, Welt.");
    EXPECT_THAT(logs.back(),
                ::testing::MatchesRegex("dictate\u2192translate\\(de\\) [0-9]+ms stt \\+ [0-9]+ms "
                                        "translate"));
}

TEST_F(AppDelegateTest, StartUpReportsTheMicrophoneAndTheKeys) {
    microphone->answer = MicrophoneAccess::Status::denied;
    launch();
    EXPECT_THAT(logs, Contains("mic DENIED"));
    EXPECT_THAT(hudCalls(), ElementsAre("hud error microphone blocked \u2014 enable Tevra in "
                                        "Settings \u2192 Microphone"));
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=fn, fn-tap, autopaste=true");
    ASSERT_EQ(statusItem->toolTips.size(), 1u);
    EXPECT_EQ(statusItem->toolTips[0],
              "Tevra \u2014 Fn Dictate \u00b7 Fn 1 Command \u00b7 Fn 2 Email \u00b7 Fn 3 Formal "
              "message \u2014 \u4e2d\u6587 \u00b7 Fn 4 Formal message \u00b7 Fn 5 Screenshot "
              "\u2192 text");
}

TEST_F(AppDelegateTest, AnUndecidedMicrophoneIsAskedAndTheAnswerLogged) {
    microphone->answer = MicrophoneAccess::Status::notDetermined;
    microphone->grant = false;
    launch();
    EXPECT_EQ(microphone->requests, 1);
    EXPECT_THAT(logs, Contains("mic prompt \u2192 granted=false"));
    EXPECT_THAT(hudCalls(), IsEmpty());
}

TEST_F(AppDelegateTest, WithNoVoicesAndAnyOtherSchemeTheAltKeysTakeOneSlot) {
    {
        HistoryStore store((data / "weft.sqlite").string());
        store.seedDefaultsIfEmpty();
        for (Mode mode : store.modes()) {
            mode.enabled = false;
            store.saveMode(mode);
        }
    }
    writeSettings({{"hotkey", ""}});
    launch();
    EXPECT_EQ(statusItem->toolTips.back(), "Tevra \u2014 ");
    EXPECT_EQ(logs.back(), "hotkeys: 0 modes, scheme=option, hotkey, autopaste=true");
    const auto& keyboard = *keyboards.back();
    EXPECT_TRUE(keyboard.holds(KeySyms::digit(1), DesktopKeyboard::Modifiers::alt));
    EXPECT_FALSE(keyboard.holds(KeySyms::digit(2), DesktopKeyboard::Modifiers::alt));
}

TEST_F(AppDelegateTest, WithoutInputControlTheAltSchemeStandsInUntilItAppears) {
    inputControl = false;
    launch();
    EXPECT_THAT(logs, Contains("Fn tap unavailable (Accessibility not granted?) \u2014 using "
                               "\u2325 scheme"));
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=fn, hotkey, autopaste=true");
    EXPECT_THAT(hudCalls(), ElementsAre("hud error Fn dictation needs Accessibility \u2014 using "
                                        "\u2325 keys until you grant it"));
    EXPECT_TRUE(app->isWatchingForAccessibility());
    EXPECT_TRUE(keyboards.back()->holds(KeySyms::digit(1), DesktopKeyboard::Modifiers::alt));

    // The Alt scheme works meanwhile.
    key(KeyEvent::Kind::keyDown, KeySyms::digit(1));
    EXPECT_TRUE(app->isCapturing());
    app->cancelCapture();

    queue.advance(9.0);
    inputControl = true;
    queue.advance(1.0);
    EXPECT_THAT(logs, Contains("Accessibility granted \u2014 switching to Fn scheme"));
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=fn, fn-tap, autopaste=true");
    EXPECT_FALSE(app->isWatchingForAccessibility());
    EXPECT_TRUE(keyboards.back()->watchingTalkKey);
    EXPECT_EQ(keyboards.size(), 3u);  // the talk key's, the Alt keys', the talk key's again
}

TEST_F(AppDelegateTest, TheWatcherGivesUpAfterAMinute) {
    inputControl = false;
    launch();
    queue.advance(59.0);
    EXPECT_TRUE(app->isWatchingForAccessibility());
    queue.advance(1.0);
    EXPECT_FALSE(app->isWatchingForAccessibility());
    inputControl = true;
    queue.advance(10.0);
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=fn, hotkey, autopaste=true");
}

TEST_F(AppDelegateTest, NoKeysAtAllIsReported) {
    keyboardsOpen = false;
    launch();
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=fn, FAILED, autopaste=true");
    EXPECT_THAT(hudCalls(), Contains("hud error hotkey registration failed"));
}

TEST_F(AppDelegateTest, SettingsSavedDuringACaptureSwapTheKeysAndTheCaptureStillFinishes) {
    launch();
    talkKey(KeyEvent::Kind::talkKeyDown);
    queue.advance(1.0);
    ASSERT_TRUE(app->isCapturing());
    recorder->recording = tone(1.0);

    writeSettings({{"hotkey", "option"}});
    app->runtime()->reload();
    notifications.post(weftSettingsChanged);
    queue.runPending();
    EXPECT_EQ(logs.back(), "hotkeys: 6 modes, scheme=option, hotkey, autopaste=true");
    EXPECT_TRUE(app->hotkey()->isCapturing());
    EXPECT_TRUE(keyboards.back()->holds(KeySyms::escape, DesktopKeyboard::Modifiers::none))
        << "a capture that goes on keeps its cancel key";

    key(KeyEvent::Kind::keyDown, KeySyms::digit(1));  // any slot key ends the capture
    EXPECT_FALSE(app->isCapturing());
    awaitPipeline();
    EXPECT_EQ(keys->posted.size(), 1u);
}

TEST_F(AppDelegateTest, TheLastRunsCrashIsCollectedAtStartAndSentWithTheSettings) {
    writeSettings({{"crashReportsEnabled", true}, {"crashReportURL", "https://crash.example/api"}});
    std::filesystem::create_directories(data / "crash");
    std::ofstream(data / "crash" / "last-signal.txt") << "tevra(+0x1) [0x2]\n";
    std::mutex mutex;
    std::vector<std::string> flushes;
    flushCrashReports = [&](const std::filesystem::path& dir, bool enabled,
                            const std::optional<std::string>& endpoint) {
        std::lock_guard lock(mutex);
        flushes.push_back(dir.string() + (enabled ? " on " : " off ") + endpoint.value_or("-") +
                          (CrashReporter::hasPending(dir) ? " pending" : ""));
    };
    launch();
    work->waitUntilIdle();
    EXPECT_FALSE(std::filesystem::exists(data / "crash" / "last-signal.txt"));
    std::lock_guard lock(mutex);
    EXPECT_THAT(flushes,
                ElementsAre(data.path().string() + " on https://crash.example/api pending"));
}

TEST_F(AppDelegateTest, ANewerReleaseIsOfferedAndEverythingElseIsSilent) {
    Appcast release{"2.0.0", "https://dl.example.org/tevra.tar.gz", std::nullopt, "Faster.", "sig"};
    struct Case {
        std::string name;
        std::string feed;
        UpdateDecision decision;
        bool download;
        std::vector<std::string> journal;
    };
    const std::string feed = "https://updates.example.org/appcast.json";
    const std::vector<Case> cases = {
        {"an http feed is never asked",
         "http://updates.example.org/appcast.json",
         UpdateDecision::updateAvailable(release),
         true,
         {}},
        {"download",
         feed,
         UpdateDecision::updateAvailable(release),
         true,
         {"check " + feed + " " + WeftCoreInfo::version, "offer Tevra 2.0.0 is available | Faster.",
          "open " + release.url}},
        {"later, and no notes",
         feed,
         UpdateDecision::updateAvailable(Appcast{"2.0.0", release.url, {}, {}, "sig"}),
         false,
         {"check " + feed + " " + WeftCoreInfo::version,
          "offer Tevra 2.0.0 is available | A new version of Tevra is ready to download."}},
        {"refused",
         feed,
         UpdateDecision::rejected(UpdateChecker::kTampered),
         true,
         {"check " + feed + " " + WeftCoreInfo::version}},
        {"up to date",
         feed,
         UpdateDecision::upToDate(),
         true,
         {"check " + feed + " " + WeftCoreInfo::version}},
    };
    for (const Case& c : cases) {
        writeSettings({{"appcastURL", c.feed}});
        std::vector<std::string> seen;
        checkForUpdate = [&](const std::string& url, const std::string& version) {
            seen.push_back("check " + url + " " + version);  // one at a time, on the pool
            return c.decision;
        };
        updatePrompt = std::make_shared<testing::RecordingUpdatePrompt>();
        updatePrompt->download = c.download;
        logs.clear();
        launch();
        work->waitUntilIdle();
        queue.runPending();
        for (const UpdateOffer& offer : updatePrompt->offers) {
            seen.push_back("offer " + offer.message + " | " + offer.informative);
        }
        for (const std::string& url : updatePrompt->opened) {
            seen.push_back("open " + url);
        }
        EXPECT_EQ(seen, c.journal) << c.name;
        EXPECT_THAT(logs, Not(Contains(HasSubstr("appcast")))) << c.name;
    }
}

TEST_F(AppDelegateTest, WhileTheNotetakerRecordsTheChimeKeepsQuietAndTheTrayStopsIt) {
    auto mic = testing::ScriptedMicrophone::make({16000, 1});
    auto system = testing::ScriptedSystemAudio::make();
    makeNotetaker = [&](WeftRuntime& runtime) {
        NotetakerServices notes;
        notes.queue = &queue;
        notes.work = work;
        notes.detector = CallDetector::create(
            queue, std::make_shared<testing::ScriptedMicrophoneUse>(),
            std::make_shared<testing::ScriptedApplications>(), [](const std::string&) {});
        notes.devices = {mic->factory(), system->factory()};
        notes.log = [](const std::string&) {};
        return NotetakerController::create(runtime, notes);
    };
    // A dictation, as far as its delivery.
    const auto dictate = [&](std::size_t deliveries) {
        capture(2.0, tone(2.0));
        ASSERT_TRUE(testing::runMainQueueUntil(
            queue,
            [&] {
                return static_cast<std::size_t>(
                           std::count_if(logs.begin(), logs.end(), [](const std::string& l) {
                               return l.starts_with("Dictate: ");
                           })) == deliveries;
            },
            20));
    };
    launch();
    EXPECT_EQ(statusItem->notesEntry, "Start notes");
    statusItem->notesAction();
    EXPECT_TRUE(app->notetaker()->state().is(NotetakerState::Kind::recording));
    EXPECT_EQ(statusItem->notesEntry, "Stop notes");
    dictate(1);
    EXPECT_THAT(sounds(), IsEmpty()) << "a cue would be recorded as the other side's";

    statusItem->notesAction();
    EXPECT_EQ(statusItem->notesEntry, "Start notes (disabled)");
    ASSERT_TRUE(testing::runMainQueueUntil(
        queue, [&] { return statusItem->notesEntry == "Start notes"; }, 20));
    EXPECT_EQ(app->notetaker()->state().is(NotetakerState::Kind::idle), true);
    dictate(2);
    EXPECT_THAT(sounds(), ElementsAre("start", "done"));
}

}  // namespace
}  // namespace tevra
