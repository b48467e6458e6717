// A session's capture with a scripted microphone and system output: the
// conversion of float samples, and the warnings that say what the other side lacks.
#include "notetaker/session_capture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <mutex>

#include "base/virtual_main_queue.h"
#include "support/main_queue_wait.h"
#include "support/recording_call_signals.h"
#include "support/scripted_microphone.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::ScriptedMicrophone;
using testing::ScriptedSystemAudio;
using Answer = ScriptedSystemAudio::Answer;

TEST(SessionCaptureToInt16, PicksTheNearestEarlierSampleScalesAndClamps) {
    const std::vector<float> ramp = {0.0f, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f};
    const struct {
        std::vector<float> in;
        double from;
        std::vector<int16_t> out;
    } cases[] = {
        {ramp, 48000, {0, 9830}},                                     // every third, counted down
        {ramp, 16000.4, {0, 3276, 6553, 9830, 13106, 16383, 19660}},  // the same rate
        {{2.0f, -2.0f, -1.0f, 1.0f, NAN}, 16000, {32767, -32768, -32767, 32767, 0}},
        {{0.5f}, 48000, {}},  // a third of a sample is none
        {{}, 8000, {}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SessionCapture::toInt16(c.in, c.from, 16000), c.out) << c.from;
    }
}

class SessionCaptureTest : public ::testing::Test {
protected:
    VirtualMainQueue queue;
    testing::TempDir data;
    std::shared_ptr<ScriptedMicrophone> mic = ScriptedMicrophone::make({16000, 1});
    std::vector<std::string> logs;
    std::mutex logMutex;

    std::unique_ptr<SessionCapture> make(const std::shared_ptr<ScriptedSystemAudio>& system) {
        return std::make_unique<SessionCapture>(
            queue, SessionDevices{mic->factory(), system->factory()},
            SessionSpool::create(data.path(), "Zoom", 1783252980), [this](const std::string& l) {
                std::lock_guard lock(logMutex);
                logs.push_back(l);
            });
    }
};

TEST_F(SessionCaptureTest, WithoutTheOtherSideItRecordsTheMicrophoneAndWarnsOnce) {
    const struct {
        Answer answer;
        std::string warning;
    } cases[] = {
        {Answer::noOutput, "No sound output to capture the other side from \u2014 mic only."},
        {Answer::fails, "Couldn't capture system audio (the monitor refused) \u2014 mic only."},
    };
    for (const auto& c : cases) {
        auto capture = make(ScriptedSystemAudio::make(c.answer));
        std::vector<std::string> warnings;
        capture->start([&](const std::string& w) { warnings.push_back(w); });
        ASSERT_TRUE(testing::runMainQueueUntil(
            queue, [&] { return !warnings.empty() && mic->isRunning(); }, 10));
        ASSERT_TRUE(mic->play(std::vector<float>(16000, 0.25f)));
        const auto result = capture->stop();
        queue.runPending();
        EXPECT_EQ(warnings, std::vector<std::string>{c.warning});
        EXPECT_FALSE(result.systemAudioAvailable);
        EXPECT_EQ(result.systemSamples, 0);
        EXPECT_GT(result.micSamples, 0);
        EXPECT_THAT(logs, ::testing::Contains("session: " + c.warning));
    }
}

}  // namespace
}  // namespace tevra
