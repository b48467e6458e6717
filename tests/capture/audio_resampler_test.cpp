#include "capture/audio_resampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace tevra {
namespace {

constexpr int kOut = 16000;

// Interleaved frames, every channel carrying the same sine.
std::vector<float> sine(int rate, int channels, double hz, double amplitude, double seconds) {
    std::vector<float> out;
    for (int f = 0; f < static_cast<int>(rate * seconds); ++f) {
        out.insert(out.end(), static_cast<std::size_t>(channels),
                   static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * hz * f / rate)));
    }
    return out;
}

// Converts in buffers of bufferFrames, as the input thread hands them over.
std::vector<int16_t> convert(int rate, int channels, const std::vector<float>& frames,
                             std::size_t bufferFrames = 4096) {
    AudioResampler resampler(rate, channels, kOut);
    std::vector<int16_t> out;
    const auto width = static_cast<std::size_t>(channels);
    for (std::size_t at = 0; at < frames.size() / width; at += bufferFrames) {
        resampler.process(frames.data() + at * width,
                          std::min(bufferFrames, frames.size() / width - at), out);
    }
    return out;
}

// Largest difference from the ideal 16 kHz sine over [from, to).
double worstError(const std::vector<int16_t>& out, double hz, double amplitude, std::size_t from,
                  std::size_t to) {
    double worst = 0;
    for (std::size_t n = from; n < std::min(to, out.size()); ++n) {
        const double ideal = amplitude * 32767.0 * std::sin(2 * std::numbers::pi * hz * n / kOut);
        worst = std::max(worst, std::abs(out[n] - ideal));
    }
    return worst;
}

TEST(AudioResampler, KeepsPitchLoudnessAndTimingAtEveryCommonRate) {
    for (const int rate : {8000, 11025, 16000, 22050, 32000, 44100, 48000, 96000}) {
        const auto out = convert(rate, 1, sine(rate, 1, 440, 0.5, 1.0));
        // Only the filter's half width (a few milliseconds) is still held back.
        EXPECT_LE(out.size(), 16000u) << rate;
        EXPECT_GE(out.size(), 16000u - 64) << rate;
        // Sample for sample the ideal sine, with no delay: within 0.1 % of full scale.
        EXPECT_LT(worstError(out, 440, 0.5, 400, out.size()), 33.0) << rate;
    }
    // 441 input samples to 160 output ones for 20 s: any rounding of the step
    // would show as a phase error that grows with time.
    const auto out = convert(44100, 2, sine(44100, 2, 1000, 0.4, 20.0), 441);
    EXPECT_GE(out.size(), 20u * kOut - 64);
    EXPECT_LT(worstError(out, 1000, 0.4, out.size() - kOut, out.size()), 33.0);
}

TEST(AudioResampler, AnyBufferSplitGivesTheSameSamplesAsOneBuffer) {
    std::mt19937 random(7);
    std::uniform_real_distribution<float> noise(-0.8f, 0.8f);
    std::uniform_int_distribution<std::size_t> size(0, 5000);
    for (const auto& [rate, channels] : {std::pair{44100, 2}, {8000, 1}, {48000, 2}, {22050, 6}}) {
        std::vector<float> frames(static_cast<std::size_t>(rate * channels) * 3 / 2);
        for (auto& x : frames) {
            x = noise(random);
        }
        const auto width = static_cast<std::size_t>(channels);
        AudioResampler pieces(rate, channels, kOut);
        std::vector<int16_t> split;
        for (std::size_t at = 0; at < frames.size() / width;) {
            const std::size_t count = std::min(size(random), frames.size() / width - at);
            pieces.process(frames.data() + at * width, count, split);
            at += count;
        }
        EXPECT_EQ(split, convert(rate, channels, frames, frames.size())) << rate;
    }
}

TEST(AudioResampler, MixesChannelsDownToTheirAverage) {
    const auto stereo = sine(48000, 2, 440, 0.5, 0.5);
    EXPECT_EQ(convert(48000, 2, stereo), convert(48000, 1, sine(48000, 1, 440, 0.5, 0.5)));
    // A voice on the left only comes through at half its level, not lost.
    auto leftOnly = stereo;
    for (std::size_t f = 0; f < leftOnly.size(); f += 2) {
        leftOnly[f + 1] = 0;
    }
    EXPECT_LT(worstError(convert(48000, 2, leftOnly), 440, 0.25, 400, 7900), 33.0);
}

TEST(AudioResampler, RemovesToneAboveTheNewNyquistAndClipsWithoutWrapping) {
    // Tones the 16 kHz output cannot hold must vanish, not fold back as
    // whistles into the voice band: below -60 dB.
    for (const auto& [rate, hz] : {std::pair{48000, 12000.0}, {44100, 10000.0}, {96000, 9000.0}}) {
        const auto out = convert(rate, 1, sine(rate, 1, hz, 0.9, 1.0));
        double sum = 0;
        for (std::size_t n = 200; n < out.size(); ++n) {
            sum += double(out[n]) * out[n];
        }
        EXPECT_LT(std::sqrt(sum / double(out.size() - 200)), 0.9 * 32767 * 1e-3) << rate;
    }
    const auto silence = convert(48000, 1, std::vector<float>(48000, 0.0f));
    EXPECT_TRUE(std::all_of(silence.begin(), silence.end(), [](int16_t s) { return s == 0; }));
    EXPECT_EQ(convert(48000, 1, std::vector<float>(48000, 1.5f)).back(), 32767);
    EXPECT_EQ(convert(48000, 1, std::vector<float>(48000, -1.5f)).back(), -32768);
}

}  // namespace
}  // namespace tevra
