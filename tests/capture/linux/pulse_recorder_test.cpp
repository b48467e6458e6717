// The recorder on a real PulseAudio server of the test's own, with a virtual
// microphone fed with espeak-ng speech.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>

#include "base/virtual_main_queue.h"
#include "capture/audio_error.h"
#include "capture/linux/pulse_audio_input.h"
#include "capture/microphone_recorder.h"
#include "support/main_queue_wait.h"
#include "support/pulse_test_server.h"
#include "support/speech_samples.h"

namespace tevra {
namespace {

using testing::PulseTestServer;

constexpr const char* kSentence = "Please send the quarterly report to the whole team by Friday.";

// Normalised cross-correlation of a recording with a reference at the best
// lag within a few milliseconds.
double similarity(std::span<const int16_t> a, std::span<const int16_t> b) {
    double best = -1;
    for (int lag = -64; lag <= 64; ++lag) {
        double ab = 0, aa = 0, bb = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            const auto j = static_cast<std::ptrdiff_t>(i) + lag;
            if (j < 0 || j >= static_cast<std::ptrdiff_t>(b.size())) {
                continue;
            }
            const double x = a[i], y = b[static_cast<std::size_t>(j)];
            ab += x * y;
            aa += x * x;
            bb += y * y;
        }
        if (aa > 0 && bb > 0) {
            best = std::max(best, ab / std::sqrt(aa * bb));
        }
    }
    return best;
}

class PulseRecorderTest : public ::testing::Test {
protected:
    void record(const std::string& server) {
        recorder = std::make_unique<MicrophoneRecorder>(mainQueue, PulseAudioInput::factory(server),
                                                        [this](const std::string& line) {
                                                            std::lock_guard lock(mutex);
                                                            logLines.push_back(line);
                                                        });
    }

    void start() {
        completed = false;
        failure = nullptr;
        recorder->start([this](float level) { levels.push_back(level); },
                        [this](std::exception_ptr error) {
                            failure = error;
                            completed = true;
                        });
    }

    bool waitForCompletion() {
        return testing::runMainQueueUntil(
            mainQueue, [this] { return completed; }, 15);
    }

    std::vector<std::string> log() {
        std::lock_guard lock(mutex);
        return logLines;
    }

    VirtualMainQueue mainQueue;
    std::unique_ptr<MicrophoneRecorder> recorder;
    bool completed = false;
    std::exception_ptr failure;
    std::vector<float> levels;
    std::mutex mutex;
    std::vector<std::string> logLines;
};

struct MicrophoneFormat {
    int rate;
    int channels;
};

class FedMicrophoneTest : public PulseRecorderTest,
                          public ::testing::WithParamInterface<MicrophoneFormat> {};

TEST_P(FedMicrophoneTest, SpeechComesBackAsSixteenKilohertzMonoOfTheSameLength) {
    const auto [rate, channels] = GetParam();
    PulseTestServer server(PulseTestServer::Microphone::fed, rate, channels);
    const auto speech = testing::spokenSamples(kSentence, rate, channels);
    const auto reference = testing::spokenSamples(kSentence, 16000, 1);
    ASSERT_GT(reference.size(), 16000u) << "espeak-ng spoke less than a second";

    record(server.address());
    start();
    ASSERT_TRUE(waitForCompletion());
    ASSERT_EQ(failure, nullptr) << describe(failure);
    EXPECT_EQ(log().at(0), "engine started: " + std::to_string(rate) + " Hz, " +
                               std::to_string(channels) + " ch");
    EXPECT_EQ(server.recordStreamCount(), 1);

    // A tenth of a second of silence after the speech, so that all of the
    // speech has arrived once the recording is longer than it.
    auto fed = speech;
    fed.resize(fed.size() + static_cast<std::size_t>(rate * channels / 10), 0);
    server.feed(fed);
    const std::size_t expected = reference.size();
    ASSERT_TRUE(testing::runMainQueueUntil(
        mainQueue, [&] { return recorder->snapshot().size() >= expected; }, 30))
        << "got " << recorder->snapshot().size() << " of " << expected << " samples";
    const auto samples = recorder->stop();

    // All of the speech and no more than the silence after it, sample for
    // sample what an offline converter makes of the speech.
    EXPECT_LE(samples.size(), expected + 1600);
    ASSERT_GE(samples.size(), expected);
    EXPECT_GT(similarity(std::span(samples).first(expected), reference), 0.99);
    ASSERT_FALSE(levels.empty());
    EXPECT_GT(*std::max_element(levels.begin(), levels.end()), 0.3f);
    EXPECT_EQ(log().back(), "recorder.stop: " + std::to_string(samples.size()) + " samples");
    EXPECT_FALSE(recorder->isRunning());
    EXPECT_EQ(server.recordStreamCount(), 0);
}

INSTANTIATE_TEST_SUITE_P(Formats, FedMicrophoneTest,
                         ::testing::Values(MicrophoneFormat{22050, 1}, MicrophoneFormat{48000, 2},
                                           MicrophoneFormat{44100, 2}),
                         [](const ::testing::TestParamInfo<MicrophoneFormat>& format) {
                             return std::to_string(format.param.rate) + "Hz" +
                                    std::to_string(format.param.channels) + "ch";
                         });

TEST_F(PulseRecorderTest, StopRightAfterStartLeavesNoStreamOrConnectionOpen) {
    PulseTestServer server(PulseTestServer::Microphone::live, 48000, 2);
    record(server.address());
    for (int attempt = 0; attempt < 3; ++attempt) {
        start();
        recorder->stop();
        EXPECT_FALSE(recorder->isRunning());
        EXPECT_EQ(server.recordStreamCount(), 0);
        EXPECT_EQ(server.clientCount(), 0);
        // The start had succeeded before the stop took it down.
        ASSERT_TRUE(waitForCompletion());
        EXPECT_EQ(failure, nullptr) << describe(failure);
    }
}

TEST_F(PulseRecorderTest, LiveMicrophoneRecordsOnTheClockAndAgainAfterStop) {
    PulseTestServer server(PulseTestServer::Microphone::live, 44100, 2);
    record(server.address());
    for (int take = 0; take < 2; ++take) {
        start();
        EXPECT_TRUE(recorder->snapshot().empty());
        ASSERT_TRUE(testing::runMainQueueUntil(
            mainQueue, [&] { return completed && recorder->snapshot().size() >= 1600; }, 15));
        EXPECT_EQ(failure, nullptr);
        const auto samples = recorder->stop();
        // Silence on the clock: a tenth of a second or more, and all of it zero.
        EXPECT_GE(samples.size(), 1600u);
        EXPECT_TRUE(std::all_of(samples.begin(), samples.end(), [](int16_t s) { return s == 0; }));
        EXPECT_EQ(server.recordStreamCount(), 0);
    }
}

TEST_F(PulseRecorderTest, NoSourceOrNoServerMeansNoInputDevice) {
    PulseTestServer server(PulseTestServer::Microphone::none);
    for (const std::string& address :
         {server.address(), std::string("unix:/nonexistent/tevra/pulse/native")}) {
        SCOPED_TRACE(address);
        record(address);
        start();
        ASSERT_TRUE(waitForCompletion());
        ASSERT_NE(failure, nullptr);
        EXPECT_EQ(describe(failure), "no input device available");
        EXPECT_FALSE(recorder->isRunning());
        EXPECT_TRUE(recorder->stop().empty());
    }
    EXPECT_EQ(server.clientCount(), 0);
}

}  // namespace
}  // namespace tevra
