#include "capture/microphone_recorder.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "capture/audio_error.h"
#include "core/virtual_main_queue.h"
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

    // Starts and runs the main queue until the completion has arrived.
    std::exception_ptr startAndWait() {
        bool done = false;
        std::exception_ptr failure;
        recorder->start(
            [this](float level) {
                levels.push_back(level);
                levelsOnMain = levelsOnMain && mainQueue.isMainThread();
            },
            [&](std::exception_ptr error) {
                EXPECT_TRUE(mainQueue.isMainThread());
                failure = error;
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

    static AudioError::Code codeOf(const std::exception_ptr& error) {
        try {
            std::rethrow_exception(error);
        } catch (const AudioError& e) {
            return e.code();
        } catch (...) {
        }
        ADD_FAILURE() << "not an AudioError";
        return {};
    }

    // Interleaved stereo frames holding two constant levels.
    static std::vector<float> stereo(std::size_t frames, float left, float right) {
        std::vector<float> out;
        for (std::size_t f = 0; f < frames; ++f) {
            out.push_back(left);
            out.push_back(right);
        }
        return out;
    }

    VirtualMainQueue mainQueue;
    std::shared_ptr<ScriptedMicrophone> microphone;
    std::unique_ptr<MicrophoneRecorder> recorder;
    std::vector<float> levels;
    bool levelsOnMain = true;
    std::mutex mutex;
    std::vector<std::string> logLines;
};

TEST_F(MicrophoneRecorderTest, RecordsSixteenKilohertzMonoWithLevelsFromTheFirstChannel) {
    use({48000, 2});
    ASSERT_EQ(startAndWait(), nullptr);
    EXPECT_EQ(log(), std::vector<std::string>{"engine started: 48000 Hz, 2 ch"});
    EXPECT_TRUE(recorder->isRunning());

    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(microphone->play(stereo(4096, 0.05f, 0.15f)));
    }
    mainQueue.runPending();
    // One level per buffer, from the left channel only: 0.05 × 12.
    ASSERT_EQ(levels.size(), 3u);
    EXPECT_NEAR(levels[2], 0.6f, 1e-5f);
    EXPECT_TRUE(levelsOnMain);

    const auto sofar = recorder->snapshot();
    EXPECT_TRUE(recorder->isRunning());
    const auto samples = recorder->stop();
    EXPECT_EQ(samples, sofar);
    // 12288 frames at 48 kHz are 4096 at 16 kHz, less the filter's tail.
    EXPECT_GE(samples.size(), 4096u - 64);
    EXPECT_LE(samples.size(), 4096u);
    // The channels are averaged: (0.05 + 0.15) / 2 of full scale.
    EXPECT_NEAR(samples.back(), 0.1 * 32767, 2);
    EXPECT_EQ(log().back(), "recorder.stop: " + std::to_string(samples.size()) + " samples");
    EXPECT_FALSE(recorder->isRunning());
    EXPECT_FALSE(microphone->isRunning());
    EXPECT_EQ(microphone->stops(), 1);
}

TEST_F(MicrophoneRecorderTest, KeepsTheLastRecordingUntilTheNextStartEmptiesIt) {
    use({16000, 1});
    EXPECT_TRUE(recorder->stop().empty()) << "nothing was ever started";
    EXPECT_EQ(log().back(), "recorder.stop: 0 samples");

    ASSERT_EQ(startAndWait(), nullptr);
    microphone->play(std::vector<float>(1600, 0.25f));
    const auto first = recorder->stop();
    ASSERT_EQ(first.size(), 1600u);
    // Stopping again hands back the same recording and starts nothing.
    EXPECT_EQ(recorder->stop(), first);
    EXPECT_EQ(microphone->starts(), 1);

    // The old buffers are gone as soon as start returns, before any new buffer.
    recorder->start({}, {});
    EXPECT_TRUE(recorder->snapshot().empty());
    recorder->stop();
}

TEST_F(MicrophoneRecorderTest, EmptyAndLoudBuffersGiveTheMeterItsBounds) {
    use({44100, 1});
    ASSERT_EQ(startAndWait(), nullptr);
    microphone->play({});
    microphone->play(std::vector<float>(441, 0.1f));
    mainQueue.runPending();
    EXPECT_EQ(levels, (std::vector<float>{0.0f, 1.0f}));
    recorder->stop();
}

TEST_F(MicrophoneRecorderTest, FailuresToStartArriveAsErrorsOnTheMainQueue) {
    use({0, 2});
    auto error = startAndWait();
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(codeOf(error), AudioError::Code::noInputDevice);
    try {
        std::rethrow_exception(error);
    } catch (const AudioError& e) {
        EXPECT_EQ(e.description(), "no input device available");
        EXPECT_STREQ(AudioError::domain, "tevra.audio");
    }
    EXPECT_EQ(microphone->starts(), 0);
    EXPECT_FALSE(recorder->isRunning());

    for (const AudioInputFormat format :
         {AudioInputFormat{48000, 0}, AudioInputFormat{48000, 64}, AudioInputFormat{5000000, 1}}) {
        use(format);
        error = startAndWait();
        EXPECT_EQ(codeOf(error), AudioError::Code::cannotConvert);
        EXPECT_EQ(describe(error), "cannot convert mic format");
        EXPECT_EQ(microphone->starts(), 0);
    }

    // The input's own refusal is passed on as it is.
    use({48000, 2});
    microphone->onStart([] { throw MessageError("cannot record: Access denied"); });
    error = startAndWait();
    EXPECT_EQ(describe(error), "cannot record: Access denied");
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
    const auto samples = recorder->stop();
    releaser.join();

    EXPECT_TRUE(samples.empty());
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
    ASSERT_EQ(startAndWait(), nullptr);
    microphone->play(std::vector<float>(4800, 0.01f));
    recorder.reset();
    EXPECT_FALSE(microphone->isRunning());
    EXPECT_EQ(mainQueue.runPending(), 1);
    EXPECT_EQ(levels.size(), 1u);
}

}  // namespace
}  // namespace tevra
