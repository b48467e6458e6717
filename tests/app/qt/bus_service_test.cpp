// The control interface on the session bus of scripts/test-env, driven by the
// real tevractl as a shortcut would drive it, in front of the orchestrator on
// recording fakes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QProcess>
#include <QStringList>
#include <memory>

#include "app/dbus/tevra_bus_service.h"
#include "app/qt/qt_main_queue.h"
#include "app/remote_control.h"
#include "support/desktop/event_wait.h"
#include "support/recording_app_services.h"
#include "support/recording_audio_recorder.h"
#include "support/recording_backends.h"
#include "support/recording_capture.h"
#include "support/recording_desktop_keyboard.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using ::testing::HasSubstr;
using testing::waitUntil;

struct CtlRun {
    int exitCode = -1;
    std::string out, err;
};

// tevractl as its own process, while this one's event loop answers it.
CtlRun tevractl(const QStringList& args) {
    QProcess process;
    process.start(TEVRACTL_PATH, args);
    CtlRun run;
    if (!waitUntil([&] { return process.state() == QProcess::NotRunning; }, 20)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput().toStdString();
    run.err = process.readAllStandardError().toStdString();
    return run;
}

class BusServiceTest : public ::testing::Test {
protected:
    QObject timers;
    QtMainQueue queue{&timers};
    testing::TempDir data;
    std::shared_ptr<testing::Journal> journal = std::make_shared<testing::Journal>();
    std::shared_ptr<testing::RecordingAudioRecorder> recorder =
        std::make_shared<testing::RecordingAudioRecorder>();
    std::shared_ptr<testing::RecordingKeyInjector> keys =
        std::make_shared<testing::RecordingKeyInjector>(journal);
    std::shared_ptr<AppDelegate> app;
    std::shared_ptr<RemoteControl> control;
    std::unique_ptr<TevraBusService> service;
    std::vector<std::string> logs;
    std::vector<QString> states;

    void SetUp() override {
        AppServices services;
        services.queue = &queue;
        services.hud = std::make_shared<testing::RecordingHud>(journal);
        services.recorder = recorder;
        auto secure = std::make_shared<testing::FakeSecureInput>();
        services.inserter = std::make_shared<TextInserter>(
            queue, std::make_shared<testing::RecordingClipboard>(journal), keys, secure);
        services.contextReader =
            std::make_shared<ContextReader>(std::make_shared<testing::ScriptedFocusProbe>());
        services.chime =
            std::make_shared<Chime>(std::make_shared<testing::RecordingSoundCues>(journal));
        services.secureInput = secure;
        services.work = std::make_shared<WorkPool>(1);
        services.makeRuntime = [this] {
            return std::make_unique<WeftRuntime>(
                data.path(), false, nullptr,
                [](const WeftSettings& settings, const ProviderKeys&,
                   std::shared_ptr<PipelineStore> store, const std::optional<std::string>&) {
                    return std::make_shared<Pipeline>(
                        std::make_shared<TranscriptionRouter>(
                            std::vector<std::shared_ptr<const TranscriptionBackend>>{
                                testing::ScriptedTranscriber::returning("s", "hello", "en")}),
                        std::vector<std::shared_ptr<const PolishBackend>>{
                            testing::ScriptedPolisher::returning("p", "Hello.")},
                        std::move(store), settings);
                });
        };
        services.makeKeyboard = [] {
            return std::make_unique<testing::RecordingDesktopKeyboard>();
        };
        services.inputControlAvailable = [] { return true; };
        services.log = [this](const std::string& line) { logs.push_back(line); };
        app = AppDelegate::create(services);
        app->applicationDidFinishLaunching();

        control = std::make_shared<RemoteControl>(queue, app);
        service = std::make_unique<TevraBusService>(control);
        app->onCaptureStateChanged = [this] { service->stateMayHaveChanged(); };
        QObject::connect(service.get(), &TevraBusService::StateChanged,
                         [this](const QString& state) { states.push_back(state); });
        ASSERT_EQ(TevraBusService::claimName(), TevraBusService::Claim::owned);
        ASSERT_TRUE(service->publish());
    }

    void TearDown() override {
        QDBusConnection::sessionBus().unregisterObject(TevraBusService::objectPath);
        QDBusConnection::sessionBus().unregisterService(TevraBusService::serviceName);
    }
};

TEST_F(BusServiceTest, EachRequestDoesWhatItsKeyDoesOrSaysWhyNot) {
    EXPECT_EQ(tevractl({"status"}).out, "capture: idle\nnotetaker: idle\n");

    // Refusals come back at once, with the reason.
    struct Refusal {
        QStringList args;
        std::string reason;
    };
    const Refusal refusals[] = {
        {{"record", "start", "--mode", "7"}, "no voice in slot 7"},
        {{"record", "finish"}, "no capture is running"},
        {{"record", "cancel"}, "no capture is running"},
        {{"window"}, "the main window is not available yet"},
        {{"notes", "start", "--app", "Zoom"}, "the notetaker is not available"},
    };
    for (const Refusal& refusal : refusals) {
        const CtlRun run = tevractl(refusal.args);
        EXPECT_EQ(run.exitCode, 1) << refusal.args.join(' ').toStdString();
        EXPECT_THAT(run.err, HasSubstr(": " + refusal.reason + "\n"));
    }
    EXPECT_EQ(logs.back(), "reopen \u2014 the main window is not available yet");

    // A capture started and finished from outside ends at the cursor, as the
    // talk key's does.
    ASSERT_EQ(tevractl({"record", "start", "--mode", "2"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return app->isCapturing(); }, 5));
    EXPECT_EQ(tevractl({"status"}).out, "capture: recording\nnotetaker: idle\n");
    recorder->recording = AudioRecorder::Samples(AudioRecorder::sampleRate, 3000);
    waitUntil([] { return false; }, AppDelegate::minCaptureSeconds);  // long enough to keep
    const CtlRun again = tevractl({"record", "toggle"});
    EXPECT_EQ(again.exitCode, 0) << "a toggle during a capture finishes it";
    ASSERT_TRUE(waitUntil([&] { return keys->posted.size() == 1; }, 10));
    waitUntil([&] { return states.size() >= 3; }, 5);
    EXPECT_THAT(states, ::testing::ElementsAre("recording", "processing", "idle"));

    ASSERT_EQ(tevractl({"record", "toggle"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return app->isCapturing(); }, 5));
    const CtlRun twice = tevractl({"record", "start"});
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_THAT(twice.err, HasSubstr("a capture is already running"));
    ASSERT_EQ(tevractl({"record", "cancel"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return !app->isCapturing(); }, 5));
    EXPECT_EQ(keys->posted.size(), 1u) << "a cancelled capture pastes nothing";
}

}  // namespace
}  // namespace tevra
