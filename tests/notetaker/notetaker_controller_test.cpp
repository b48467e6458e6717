// The notetaker's controller on virtual time: the real detector, capture,
// spool and processing, with scripted signals, devices and services, and a
// real store.
#include "notetaker/notetaker_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "notetaker/transcript_assembly.h"
#include "store/history_store.h"
#include "support/main_queue_wait.h"
#include "support/recording_backends.h"
#include "support/recording_call_signals.h"
#include "support/scripted_microphone.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using testing::ScriptedSystemAudio;
using Kind = NotetakerState::Kind;

constexpr double kEpoch = 1783252980;  // the wall clock at virtual time 0

// A voice as far as the silence test can tell, as float and as 16-bit samples.
std::vector<float> tone(double seconds) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * 16000));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = 0.2f * static_cast<float>(std::sin(2 * M_PI * 440.0 * i / 16000.0));
    }
    return samples;
}
std::vector<int16_t> pcm(double seconds) {
    const auto floats = tone(seconds);
    std::vector<int16_t> samples(floats.size());
    std::transform(floats.begin(), floats.end(), samples.begin(),
                   [](float s) { return static_cast<int16_t>(s * 32767); });
    return samples;
}

class NotetakerControllerTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    testing::TempDir data;
    std::shared_ptr<WorkPool> work = std::make_shared<WorkPool>(2);
    std::shared_ptr<testing::ScriptedMicrophoneUse> micUse =
        std::make_shared<testing::ScriptedMicrophoneUse>();
    std::shared_ptr<testing::ScriptedApplications> apps =
        std::make_shared<testing::ScriptedApplications>();
    std::shared_ptr<testing::ScriptedMicrophone> mic =
        testing::ScriptedMicrophone::make({16000, 1});
    std::shared_ptr<ScriptedSystemAudio> system = ScriptedSystemAudio::make();
    // The first window sent is the microphone's: the user's side.
    std::shared_ptr<testing::ScriptedTranscriber> speech =
        std::make_shared<testing::ScriptedTranscriber>("scripted", [this] {
            return Transcript{
                speech->calls().size() == 1 ? "Where is the report?" : "I'll send it on Friday.",
                "en",
                {}};
        });
    std::unique_ptr<WeftRuntime> runtime;
    std::shared_ptr<NotetakerController> notetaker;
    std::vector<Kind> states;
    std::vector<std::string> logs;
    std::mutex logMutex;

    void SetUp() override {
        notetaker.reset();
        apps->windows = {"zoom"};
        std::ofstream(data / "settings.json") << R"({"notetakerAutoDetect": true})";
        runtime = std::make_unique<WeftRuntime>(data.path(), false, nullptr);
        NotetakerServices services;
        services.queue = &queue;
        services.work = work;
        services.detector =
            CallDetector::create(queue, micUse, apps, [this](const std::string& l) { log(l); });
        services.devices = {mic->factory(), system->factory()};
        services.sessionServices = [this](const WeftRuntime& r) {
            return SessionServices{
                std::make_shared<TranscriptionRouter>(
                    std::vector<std::shared_ptr<const TranscriptionBackend>>{speech}),
                std::nullopt,
                {testing::ScriptedPolisher::returning(
                    "model", R"({"items":[{"kind":"task","title":"Send the report",)"
                             R"("owner":"them","confidence":0.9}]})")},
                r.store()};
        };
        services.clock = [this] { return kEpoch + queue.now(); };
        services.log = [this](const std::string& l) { log(l); };
        notetaker = NotetakerController::create(*runtime, services);
        notetaker->observe([this] {
            if (states.empty() || states.back() != notetaker->state().kind) {
                states.push_back(notetaker->state().kind);
            }
        });
    }

    void TearDown() override {
        work->waitUntilIdle();
        notetaker.reset();
    }

    void log(const std::string& line) {
        std::lock_guard lock(logMutex);
        logs.push_back(line);
    }

    // Both sides say something once the devices run.
    void talk() {
        ASSERT_TRUE(testing::runMainQueueUntil(
            queue, [&] { return mic->isRunning() && system->isRunning(); }, 10));
        ASSERT_TRUE(mic->play(tone(2)));
        ASSERT_TRUE(system->play(pcm(2)));
    }

    void awaitIdle() {
        ASSERT_TRUE(testing::runMainQueueUntil(
            queue, [&] { return notetaker->state().is(Kind::idle) && !notetaker->isStopping(); },
            20));
    }

    std::vector<NoteSession> sessions() { return runtime->store()->recentSessions(10); }
    bool spoolIsEmpty() { return SessionSpool::unsaved(data.path()).empty(); }
};

TEST_F(NotetakerControllerTest, ADetectedCallIsRecordedOnBothSidesAndSavedWhenItEnds) {
    micUse->set(true);
    queue.advance(CallDetector::startDebounce + 0.5);
    EXPECT_EQ(notetaker->state(), NotetakerState::detected("Zoom"));
    queue.advance(NotetakerController::detectGrace);
    EXPECT_EQ(notetaker->state(), NotetakerState::recording("Zoom", kEpoch + 4.2));
    talk();

    micUse->set(false);
    queue.advance(CallDetector::endGrace + CallDetector::pollInterval);
    EXPECT_EQ(notetaker->state(), NotetakerState::processing());
    awaitIdle();

    EXPECT_THAT(states, ElementsAre(Kind::detected, Kind::recording, Kind::processing, Kind::idle));
    const auto saved = sessions();
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(notetaker->latestSessionID(), saved[0].id);
    EXPECT_EQ(saved[0].appName, "Zoom");
    EXPECT_EQ(saved[0].startedAt, kEpoch + 4.2);
    EXPECT_EQ(TranscriptAssembly::flatText(saved[0].transcript),
              "Me: Where is the report?\nThem: I'll send it on Friday.");
    ASSERT_EQ(saved[0].items.size(), 1u);
    EXPECT_EQ(saved[0].items[0].title, "Send the report");
    EXPECT_FALSE(notetaker->lastWarning());
    EXPECT_TRUE(spoolIsEmpty()) << "a saved session's audio is removed";
    EXPECT_FALSE(mic->isRunning());
}

// What the detector and the user do, one step at a time, and where the
// controller ends up.
TEST_F(NotetakerControllerTest, DetectionsStartsAndStopsMeetInTheRightStates) {
    const struct {
        const char* name;
        std::function<void()> steps;
        std::vector<Kind> states;
        std::vector<std::string> apps;  // of the sessions saved, newest first
    } cases[] = {
        {"a call that ends within the grace leaves no trace",
         [&] {
             notetaker->detector().onCallStarted("Zoom");
             queue.advance(1.0);
             notetaker->detector().onCallEnded();
             queue.advance(1.0);
         },
         {Kind::detected, Kind::idle},
         {}},
        {"a manual start during the grace takes over at once",
         [&] {
             notetaker->detector().onCallStarted("Zoom");
             notetaker->startManual("Manual");
             queue.advance(2.0);
             notetaker->stop();
         },
         {Kind::detected, Kind::recording, Kind::processing, Kind::idle},
         {"Manual"}},
        {"stop() while idle does nothing", [&] { notetaker->stop(); }, {}, {}},
        {"concurrent stops make one session, and each hears the end",
         [&] {
             notetaker->startManual("");
             int ends = 0;
             notetaker->stop([&] { ++ends; });
             notetaker->stop([&] { ++ends; });
             notetaker->startManual("Other");  // processing ignores it
             awaitIdle();
             EXPECT_EQ(ends, 2);
         },
         {Kind::recording, Kind::processing, Kind::idle},
         {"Notes"}},
        {"with auto-detection off a reported call does nothing",
         [&] {
             notetaker->setAutoDetect(false);
             notetaker->detector().onCallStarted("Zoom");
             queue.advance(2.0);
             EXPECT_FALSE(WeftSettings::load(data.path()).notetakerAutoDetect);
         },
         {},
         {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        states.clear();
        for (const auto& session : sessions()) {
            runtime->store()->deleteSession(session.id);
        }
        notetaker->setAutoDetect(true);
        c.steps();
        awaitIdle();
        EXPECT_EQ(states, c.states);
        std::vector<std::string> saved;
        for (const auto& session : sessions()) {
            saved.push_back(session.appName);
        }
        EXPECT_EQ(saved, c.apps);
        EXPECT_TRUE(spoolIsEmpty());
    }
}

TEST_F(NotetakerControllerTest, AMicrophoneOnlySessionSaysWhyTheOtherSideIsMissing) {
    system = ScriptedSystemAudio::make(ScriptedSystemAudio::Answer::noOutput);
    SetUp();  // again, with this system output
    notetaker->startManual("Manual");
    ASSERT_TRUE(testing::runMainQueueUntil(
        queue, [&] { return notetaker->lastWarning().has_value(); }, 10));
    EXPECT_EQ(notetaker->lastWarning(), SessionCapture::noOutputWarning());
    notetaker->stop();
    awaitIdle();
    EXPECT_EQ(notetaker->lastWarning(), NotetakerController::microphoneOnlyWarning());
    EXPECT_EQ(sessions().size(), 1u);
}

TEST_F(NotetakerControllerTest, ARecordingLeftByACrashIsSavedAndKeptWhenNoServiceTranscribesIt) {
    // A call cut short: both files unfinished, as a crash leaves them.
    SpoolFolder folder = SessionSpool::create(data.path(), "Zoom", kEpoch - 600);
    for (const auto& file : {folder.mic(), folder.system()}) {
        std::string image;
        {
            SpoolWriter writer(file, 16000);
            writer.append(pcm(3));
            image = testing::readFile(file);
        }
        std::ofstream(file, std::ios::binary | std::ios::trunc) << image;
    }
    speech = testing::ScriptedTranscriber::failing("scripted", MessageError("down"));
    SetUp();  // the next start, with every speech service down
    notetaker->recoverSpooledSessions();
    ASSERT_TRUE(testing::runMainQueueUntil(
        queue, [&] { return sessions().size() == 1; }, 20));
    work->waitUntilIdle();
    EXPECT_EQ(sessions()[0].appName, "Zoom");
    EXPECT_EQ(sessions()[0].startedAt, kEpoch - 600);
    EXPECT_EQ(speech->calls().size(), 2u) << "both sides were tried";
    EXPECT_TRUE(spoolIsEmpty()) << "saved, and known as saved";
    EXPECT_TRUE(std::filesystem::exists(folder.mic())) << "the audio stays for another try";
    EXPECT_THAT(logs, ::testing::Contains(::testing::HasSubstr("tevractl notes process --mic")));

    notetaker->recoverSpooledSessions();
    work->waitUntilIdle();
    EXPECT_EQ(sessions().size(), 1u) << "a kept recording is not saved twice";
}

}  // namespace
}  // namespace tevra
