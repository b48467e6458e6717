#include "capture/audio_resampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <random>
#include <vector>

#include "capture/audio_level.h"

namespace tevra {
namespace {

constexpr int kOut = 16000;

// Interleaved frames, every channel carrying the same sine.
std::vector<float> sine(int rate, int channels, double hz, double amplitude, double seconds) {
    const auto frames = static_cast<std::size_t>(rate * seconds);
    std::vector<float> out(frames * static_cast<std::size_t>(channels));
    for (std::size_t f = 0; f < frames; ++f) {
        const double v = amplitude * std::sin(2 * std::numbers::pi * hz * double(f) / rate);
        for (int c = 0; c < channels; ++c) {
            out[f * static_cast<std::size_t>(channels) + static_cast<std::size_t>(c)] =
                static_cast<float>(v);
        }
    }
    return out;
}

std::vector<int16_t> convert(AudioResampler& resampler, const std::vector<float>& frames,
                             std::size_t bufferFrames) {
    std::vector<int16_t> out;
    const auto channels = static_cast<std::size_t>(resampler.channels());
    const std::size_t total = frames.size() / channels;
    for (std::size_t at = 0; at < total; at += bufferFrames) {
        const std::size_t count = std::min(bufferFrames, total - at);
        resampler.process(frames.data() + at * channels, count, out);
    }
    return out;
}

// Largest difference from the ideal 16 kHz sine, away from the edges.
double worstError(const std::vector<int16_t>& out, double hz, double amplitude, std::size_t from,
                  std::size_t to) {
    double worst = 0;
    for (std::size_t n = from; n < to && n < out.size(); ++n) {
        const double ideal =
            amplitude * 32767.0 * std::sin(2 * std::numbers::pi * hz * double(n) / kOut);
        worst = std::max(worst, std::abs(out[n] - ideal));
    }
    return worst;
}

double rms(const std::vector<int16_t>& out, std::size_t from) {
    double sum = 0;
    for (std::size_t n = from; n < out.size(); ++n) {
        sum += double(out[n]) * out[n];
    }
    return std::sqrt(sum / double(out.size() - from));
}

TEST(AudioResampler, KeepsPitchLoudnessAndTimingAtEveryCommonRate) {
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 44100, 48000, 96000}) {
        SCOPED_TRACE(rate);
        AudioResampler resampler(rate, 1, kOut);
        const auto out = convert(resampler, sine(rate, 1, 440, 0.5, 1.0), 4096);
        // Only the filter's half width (a few milliseconds) is still held back.
        EXPECT_LE(out.size(), 16000u);
        EXPECT_GE(out.size(), 16000u - 64);
        // Sample for sample the ideal sine, with no delay: within 0.1 % of full scale.
        EXPECT_LT(worstError(out, 440, 0.5, 400, out.size()), 33.0);
    }
}

TEST(AudioResampler, StaysInStepOverLongRecordingsInSmallBuffers) {
    // 441 input samples to 160 output ones: any rounding of the step would
    // show as a phase error that grows with time.
    AudioResampler resampler(44100, 2, kOut);
    const auto out = convert(resampler, sine(44100, 2, 1000, 0.4, 20.0), 441);
    EXPECT_GE(out.size(), 20u * kOut - 64);
    EXPECT_LT(worstError(out, 1000, 0.4, out.size() - kOut, out.size()), 33.0);
}

TEST(AudioResampler, AnyBufferSplitGivesTheSameSamplesAsOneBuffer) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> noise(-0.8f, 0.8f);
    for (const auto& [rate, channels] : {std::pair{44100, 2}, {8000, 1}, {48000, 2}, {22050, 6}}) {
        SCOPED_TRACE(rate);
        std::vector<float> frames(static_cast<std::size_t>(rate * channels) * 3 / 2);
        for (auto& x : frames) {
            x = noise(random);
        }
        AudioResampler whole(rate, channels, kOut);
        std::vector<int16_t> expected;
        whole.process(frames.data(), frames.size() / static_cast<std::size_t>(channels), expected);

        AudioResampler pieces(rate, channels, kOut);
        std::vector<int16_t> split;
        std::uniform_int_distribution<std::size_t> size(0, 5000);
        const auto total = frames.size() / static_cast<std::size_t>(channels);
        for (std::size_t at = 0; at < total;) {
            const std::size_t count = std::min(size(random), total - at);
            pieces.process(frames.data() + at * static_cast<std::size_t>(channels), count, split);
            at += count;
        }
        EXPECT_EQ(split, expected);
    }
}

TEST(AudioResampler, MixesChannelsDownToTheirAverage) {
    const auto stereo = sine(48000, 2, 440, 0.5, 0.5);
    const auto mono = sine(48000, 1, 440, 0.5, 0.5);
    AudioResampler fromStereo(48000, 2, kOut);
    AudioResampler fromMono(48000, 1, kOut);
    EXPECT_EQ(convert(fromStereo, stereo, 4096), convert(fromMono, mono, 4096));

    // A voice on the left only comes through at half its level, not lost.
    auto leftOnly = stereo;
    for (std::size_t f = 0; f < leftOnly.size(); f += 2) {
        leftOnly[f + 1] = 0;
    }
    AudioResampler fromLeft(48000, 2, kOut);
    EXPECT_LT(worstError(convert(fromLeft, leftOnly, 4096), 440, 0.25, 400, 7900), 33.0);
}

TEST(AudioResampler, KeepsToneAboveTheNewNyquistOut) {
    // Tones the 16 kHz output cannot hold must vanish, not fold back as
    // whistles into the voice band.
    for (const auto& [rate, hz] : {std::pair{48000, 12000.0}, {44100, 10000.0}, {96000, 9000.0}}) {
        SCOPED_TRACE(rate);
        AudioResampler resampler(rate, 1, kOut);
        const auto out = convert(resampler, sine(rate, 1, hz, 0.9, 1.0), 4096);
        EXPECT_LT(rms(out, 200), 0.9 * 32767 * 1e-3);  // below -60 dB
    }
}

TEST(AudioResampler, SilenceStaysExactAndOverloadClipsWithoutWrapping) {
    AudioResampler resampler(48000, 1, kOut);
    std::vector<float> frames(48000, 0.0f);
    auto out = convert(resampler, frames, 4096);
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](int16_t s) { return s == 0; }));

    std::fill(frames.begin(), frames.end(), 1.5f);
    out.clear();
    resampler.process(frames.data(), frames.size(), out);
    EXPECT_EQ(out.back(), 32767);
    std::fill(frames.begin(), frames.end(), -1.5f);
    out.clear();
    resampler.process(frames.data(), frames.size(), out);
    EXPECT_EQ(out.back(), -32768);
}

TEST(AudioResampler, SupportsRealInputFormatsOnly) {
    EXPECT_TRUE(AudioResampler::supports(48000, 2));
    EXPECT_TRUE(AudioResampler::supports(8000, 1));
    EXPECT_TRUE(AudioResampler::supports(192000, 8));
    EXPECT_FALSE(AudioResampler::supports(0, 2));
    EXPECT_FALSE(AudioResampler::supports(-44100, 2));
    EXPECT_FALSE(AudioResampler::supports(2000000, 2));
    EXPECT_FALSE(AudioResampler::supports(48000, 0));
    EXPECT_FALSE(AudioResampler::supports(48000, 33));
}

TEST(MeterLevel, ReadsTheFirstChannelScaledAndCapped) {
    // Left at 0.05 reads 0.6 whatever the right channel carries.
    std::vector<float> frames;
    for (int f = 0; f < 480; ++f) {
        frames.push_back(0.05f);
        frames.push_back(0.9f);
    }
    EXPECT_NEAR(meterLevel(frames.data(), 480, 2), 0.6f, 1e-5f);
    // Anything above 1/12 of full scale is exactly the top of the meter.
    std::vector<float> loud(960, 0.1f);
    EXPECT_EQ(meterLevel(loud.data(), 960, 1), 1.0f);
    // An empty buffer reads 0 rather than dividing by zero.
    EXPECT_EQ(meterLevel(loud.data(), 0, 1), 0.0f);
}

}  // namespace
}  // namespace tevra
