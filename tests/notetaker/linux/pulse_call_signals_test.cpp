// The notetaker's two sound signals against real PulseAudio servers of the
// test's own: whether another program records the microphone, and what the
// default output plays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <mutex>
#include <thread>

#include "base/virtual_main_queue.h"
#include "capture/linux/pulse_audio_input.h"
#include "capture/microphone_recorder.h"
#include "notetaker/linux/pulse_microphone_use.h"
#include "notetaker/linux/pulse_monitor_source.h"
#include "notetaker/session_capture.h"
#include "stt/wav.h"
#include "support/child_process.h"
#include "support/main_queue_wait.h"
#include "support/pulse_test_server.h"
#include "support/scripted_microphone.h"
#include "support/temp_dir.h"

namespace tevra {
namespace {

using testing::BackgroundProgram;
using testing::PulseTestServer;

bool within(double seconds, const std::function<bool()>& done) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (!done()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

// Whether the answer stays false for a while after the server has the stream.
bool staysCold(PulseMicrophoneUse& use) {
    return !within(1.0, [&] { return use.isDefaultInputHot(); });
}

std::vector<std::string> recorder(const PulseTestServer& server, const std::string& device) {
    return {"parecord", "--server=" + server.address(), "--device=" + device, "--raw"};
}

TEST(PulseMicrophoneUse, OnlyAnotherProgramRecordingTheMicrophoneIsAUse) {
    PulseTestServer server(PulseTestServer::Microphone::fed, 48000, 2);
    PulseMicrophoneUse use(server.address());
    std::atomic<int> changes{0};
    use.listen([&] { ++changes; });
    EXPECT_TRUE(staysCold(use)) << "nobody records";
    {
        VirtualMainQueue queue;
        MicrophoneRecorder ours(queue, PulseAudioInput::factory(server.address()),
                                [](const std::string&) {});
        ours.start([](float) {}, [](std::exception_ptr) {});
        ASSERT_TRUE(within(10, [&] { return server.recordStreamCount() == 1; }));
        EXPECT_TRUE(staysCold(use)) << "Tevra's own recording is no call";
        ours.stop();
    }
    {
        BackgroundProgram monitor(recorder(server, "speakers.monitor"));
        ASSERT_TRUE(within(10, [&] { return server.recordStreamCount() == 1; }));
        EXPECT_TRUE(staysCold(use)) << "a recording of the speakers is no use of the microphone";
    }
    EXPECT_EQ(changes, 0);
    {
        BackgroundProgram call(recorder(server, "microphone"));
        EXPECT_TRUE(within(10, [&] { return use.isDefaultInputHot(); }));
        EXPECT_GE(changes, 1) << "the listener hears of it";
    }
    EXPECT_TRUE(within(10, [&] { return !use.isDefaultInputHot(); }));
    use.stopListening();
}

std::vector<int16_t> tone(double frequency, double seconds) {
    std::vector<int16_t> samples(static_cast<std::size_t>(seconds * 16000));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>(12000 * std::sin(2 * M_PI * frequency * i / 16000.0));
    }
    return samples;
}

// What the monitor heard since the last clear: its loud samples, and their
// pitch from how often they cross zero.
class Listener {
public:
    void add(std::span<const int16_t> samples) {
        std::lock_guard lock(mutex_);
        for (const int16_t s : samples) {
            if (std::abs(s) > 2000) {
                loud_.push_back(s);
                span_ = heard_ + 1 - first_.value_or(heard_);
                first_ = first_.value_or(heard_);
            }
            ++heard_;
        }
    }
    std::size_t loud() {
        std::lock_guard lock(mutex_);
        return loud_.size();
    }
    double frequency() {
        std::lock_guard lock(mutex_);
        std::size_t crossings = 0;
        for (std::size_t i = 1; i < loud_.size(); ++i) {
            crossings += (loud_[i] > 0) != (loud_[i - 1] > 0) ? 1 : 0;
        }
        return crossings / 2.0 / (static_cast<double>(span_) / 16000.0);
    }
    void clear() {
        std::lock_guard lock(mutex_);
        loud_.clear();
        first_.reset();
    }

private:
    std::mutex mutex_;
    std::vector<int16_t> loud_;
    std::size_t heard_ = 0;
    std::size_t span_ = 0;
    std::optional<std::size_t> first_;
};

TEST(PulseMonitorSource, RecordsTheDefaultOutputAt16kHzAndFollowsItWhenItChanges) {
    PulseTestServer server(PulseTestServer::Microphone::fed, 48000, 2);
    testing::TempDir dir;
    for (const auto& [name, frequency] : {std::pair{"low", 400.0}, {"high", 1000.0}}) {
        const ByteBuffer wav = WAV::data(tone(frequency, 1.0), 16000);
        std::ofstream(dir / (std::string(name) + ".wav"), std::ios::binary)
            .write(wav.data(), static_cast<std::streamsize>(wav.size()));
    }
    const auto play = [&](const std::string& sink, const char* name) {
        testing::runProgram({"paplay", "--server=" + server.address(), "--device=" + sink,
                             (dir / (std::string(name) + ".wav")).string()});
    };
    Listener listener;
    std::mutex noticeMutex;
    std::vector<std::string> notices;
    PulseMonitorSource source(server.address());
    source.start([&](std::span<const int16_t> samples) { listener.add(samples); },
                 [&](const std::string& notice) {
                     std::lock_guard lock(noticeMutex);
                     notices.push_back(notice);
                 });

    play("speakers", "low");
    ASSERT_TRUE(within(5, [&] { return listener.loud() > 12000; })) << "the tone did not arrive";
    EXPECT_NEAR(listener.frequency(), 400, 10) << "not 16 kHz";

    server.pactl({"load-module", "module-null-sink", "sink_name=headphones"});
    server.pactl({"set-default-sink", "headphones"});
    ASSERT_TRUE(within(5, [&] {
        std::lock_guard lock(noticeMutex);
        return !notices.empty();
    }));
    EXPECT_EQ(notices.front(), "now from the output headphones");
    listener.clear();
    play("speakers", "low");  // no longer the default: not heard
    play("headphones", "high");
    ASSERT_TRUE(within(5, [&] { return listener.loud() > 12000; }))
        << "the new output was not followed";
    EXPECT_NEAR(listener.frequency(), 1000, 25) << "only the new output's tone";
    source.stop();
}

TEST(PulseMonitorSource, WithoutAnyOutputTheSessionWarnsAndRecordsTheMicrophone) {
    PulseTestServer server(PulseTestServer::Microphone::none);
    testing::TempDir data;
    VirtualMainQueue queue;
    auto mic = testing::ScriptedMicrophone::make({16000, 1});
    SessionCapture capture(queue, {mic->factory(), PulseMonitorSource::factory(server.address())},
                           SessionSpool::create(data.path(), "Zoom", 0), [](const std::string&) {});
    std::vector<std::string> warnings;
    capture.start([&](const std::string& warning) { warnings.push_back(warning); });
    ASSERT_TRUE(testing::runMainQueueUntil(
        queue, [&] { return !warnings.empty(); }, 10));
    EXPECT_EQ(warnings, std::vector<std::string>{SessionCapture::noOutputWarning()});
    EXPECT_FALSE(capture.stop().systemAudioAvailable);
}

}  // namespace
}  // namespace tevra
