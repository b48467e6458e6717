#include "capture/microphone_recorder.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "base/virtual_main_queue.h"
#include "capture/audio_error.h"
#include "support/main_queue_wait.h"
#include "support/scripted_microphone.h"

namespace tevra {
namespace {

using testing::ScriptedMicrophone;

// The recorder over a scripted microphone, with the test thread as the main thread.
class MicrophoneRecorderTest : public ::testing::Test {
protected:
    void use(AudioInputFormat format) {
        microphone = ScriptedMicrophone::make(format);
        recorder = std::make_unique<MicrophoneRecorder>(mainQueue, microphone->factory(),
                                                        [this](const std::string& line) {
                                                            std::lock_guard lock(mutex);
                                                            logLines.push_back(line);
                                                        });
    }
    // Starts, and runs the main queue until the completion has arrived on it;
    // gives the failure's description, or "" for none.
    std::string startAndWait() {
        bool done = false;
        std::string failure;
        recorder->start(
            [this](float level) { levels.push_back(mainQueue.isMainThread() ? level : -1); },
            [&](std::exception_ptr error) {
                EXPECT_TRUE(mainQueue.isMainThread());
                failure = error ? describe(error) : "";
                done = true;
            });
        EXPECT_FALSE(done) << "the completion must arrive through the main queue";
        EXPECT_TRUE(testing::runMainQueueUntil(
            mainQueue, [&] { return done; }, 10));
        return failure;
    }
    std::vector<std::string> log() {
        std::lock_guard lock(mutex);
        return logLines;
    }

    VirtualMainQueue mainQueue;
    std::shared_ptr<ScriptedMicrophone> microphone;
    std::unique_ptr<MicrophoneRecorder> recorder;
    std::vector<float> levels;
    std::mutex mutex;
    std::vector<std::string> logLines;
};

TEST_F(MicrophoneRecorderTest, RecordsSixteenKilohertzMonoWithLevelsFromTheFirstChannel) {
    use({48000, 2});
    EXPECT_TRUE(recorder->stop().empty()) << "nothing was ever started";
    ASSERT_EQ(startAndWait(), "");
    EXPECT_EQ(log(), (std::vector<std::string>{"recorder.stop: 0 samples",
                                               "engine started: 48000 Hz, 2 ch"}));
    std::vector<float> frames;
    for (int f = 0; f < 4096; ++f) {
        frames.insert(frames.end(), {0.05f, 0.15f});
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(microphone->play(frames));
    }
    microphone->play({});
    microphone->play(std::vector<float>(882, 0.1f));
    mainQueue.runPending();
    // One level per buffer, from the left channel only: 0.05 × 12, capped at 1.
    ASSERT_EQ(levels.size(), 5u);
    EXPECT_NEAR(levels[2], 0.6f, 1e-5f);
    EXPECT_EQ(levels[3], 0.0f);
    EXPECT_EQ(levels[4], 1.0f);

    const auto sofar = recorder->snapshot();
    EXPECT_TRUE(recorder->isRunning());
    const auto samples = recorder->stop();
    EXPECT_EQ(samples, sofar);
    // 12729 frames at 48 kHz are 4243 at 16 kHz, less the filter's tail; the
    // channels are averaged.
    EXPECT_GE(samples.size(), 4243u - 64);
    EXPECT_LE(samples.size(), 4243u);
    EXPECT_NEAR(samples[4000], 0.1 * 32767, 2);
    EXPECT_EQ(log().back(), "recorder.stop: " + std::to_string(samples.size()) + " samples");
    EXPECT_FALSE(microphone->isRunning());

    // Stopping again hands back the same recording; the next start empties it at once.
    EXPECT_EQ(recorder->stop(), samples);
    EXPECT_EQ(microphone->starts(), 1);
    EXPECT_EQ(microphone->stops(), 1);
    recorder->start({}, {});
    EXPECT_TRUE(recorder->snapshot().empty());
    recorder->stop();
}

TEST_F(MicrophoneRecorderTest, FailuresToStartArriveAsErrorsOnTheMainQueue) {
    const std::pair<AudioInputFormat, std::string> cases[] = {
        {{0, 2}, "no input device available"},
        {{48000, 0}, "cannot convert mic format"},
        {{48000, 64}, "cannot convert mic format"},
        {{5000000, 1}, "cannot convert mic format"},
    };
    for (const auto& [format, text] : cases) {
        use(format);
        EXPECT_EQ(startAndWait(), text);
        EXPECT_EQ(microphone->starts(), 0);
        EXPECT_FALSE(recorder->isRunning());
    }
    EXPECT_STREQ(AudioError::domain, "tevra.audio");

    // The input's own refusal is passed on as it is.
    use({48000, 2});
    microphone->onStart([] { throw MessageError("cannot record: Access denied"); });
    EXPECT_EQ(startAndWait(), "cannot record: Access denied");
    EXPECT_FALSE(recorder->isRunning());
    EXPECT_TRUE(log().empty()) << "no engine started";
}

TEST_F(MicrophoneRecorderTest, StopDuringStartWaitsForItAndLeavesNothingRunning) {
    use({48000, 2});
    microphone->holdStarts();
    bool completed = false;
    std::exception_ptr failure;
    recorder->start({}, [&](std::exception_ptr error) {
        failure = error;
        completed = true;
    });
    ASSERT_TRUE(microphone->waitUntilStartIsHeld(10));
    std::thread releaser([&] { microphone->release(); });
    EXPECT_TRUE(recorder->stop().empty());
    releaser.join();
    EXPECT_EQ(microphone->starts(), 1);
    EXPECT_EQ(microphone->stops(), 1);
    EXPECT_FALSE(microphone->isRunning());
    EXPECT_FALSE(recorder->isRunning());
    // The start itself succeeded; its completion still arrives.
    ASSERT_TRUE(testing::runMainQueueUntil(
        mainQueue, [&] { return completed; }, 10));
    EXPECT_EQ(failure, nullptr);
}

TEST_F(MicrophoneRecorderTest, GoingAwayStopsTheInputAndLeavesPostedLevelsHarmless) {
    use({48000, 1});
    ASSERT_EQ(startAndWait(), "");
    microphone->play(std::vector<float>(4800, 0.01f));
    recorder.reset();
    EXPECT_FALSE(microphone->isRunning());
    EXPECT_EQ(mainQueue.runPending(), 1);
    EXPECT_EQ(levels.size(), 1u);
}

}  // namespace
}  // namespace tevra
