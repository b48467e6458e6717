#include "capture/audio_resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace tevra {
namespace {

// Zero crossings of the sinc on each side and the Kaiser window's shape:
// about 80 dB of stop band, far below what a microphone hears.
constexpr double kZeroCrossings = 24.0;
constexpr double kKaiserBeta = 8.0;
// The pass band ends this far below the lower Nyquist frequency, leaving
// room for the transition band.
constexpr double kCutoff = 0.9;
// Rates with an unusual ratio would need one filter row per fraction; beyond
// this many the fraction is rounded to the nearest row, a timing error below
// a thousandth of a sample that never accumulates.
constexpr int64_t kMaxTableRows = 1024;

double sinc(double x) {
    if (x == 0.0) {
        return 1.0;
    }
    const double px = std::numbers::pi * x;
    return std::sin(px) / px;
}

double kaiser(double x) {
    if (std::abs(x) >= 1.0) {
        return 0.0;
    }
    return std::cyl_bessel_i(0.0, kKaiserBeta * std::sqrt(1.0 - x * x)) /
           std::cyl_bessel_i(0.0, kKaiserBeta);
}

int16_t toInt16(float x) {
    const float scaled = std::clamp(x * 32767.0f, -32768.0f, 32767.0f);
    return static_cast<int16_t>(std::lrint(scaled));
}

}  // namespace

bool AudioResampler::supports(int inputRate, int channels) {
    return inputRate >= minInputRate && inputRate <= maxInputRate && channels >= 1 &&
           channels <= maxChannels;
}

AudioResampler::AudioResampler(int inputRate, int channels, int outputRate)
    : inputRate_(inputRate), channels_(channels), outputRate_(outputRate) {
    const int64_t divisor = std::gcd(int64_t{inputRate}, int64_t{outputRate});
    step_ = inputRate / divisor;
    phases_ = outputRate / divisor;
    buildFilter();
    // Silence before the first sample, so the first outputs need no special case.
    history_.assign(static_cast<std::size_t>(halfTaps_ - 1), 0.0f);
    base_ = -(halfTaps_ - 1);
}

void AudioResampler::buildFilter() {
    if (inputRate_ == outputRate_) {
        return;  // process() copies
    }
    // Cut-off as a fraction of the input's Nyquist frequency: below the output's
    // Nyquist when going down, below the input's own when going up.
    const double cutoff = kCutoff * std::min(1.0, double(outputRate_) / double(inputRate_));
    const double halfWidth = kZeroCrossings / cutoff;  // in input samples
    halfTaps_ = static_cast<int64_t>(std::ceil(halfWidth));
    tableRows_ = std::min(phases_, kMaxTableRows);
    const int64_t taps = 2 * halfTaps_;
    table_.assign(static_cast<std::size_t>(tableRows_ * taps), 0.0f);
    std::vector<double> row(static_cast<std::size_t>(taps));
    for (int64_t r = 0; r < tableRows_; ++r) {
        const double fraction = double(r) / double(tableRows_);
        double sum = 0;
        for (int64_t j = 0; j < taps; ++j) {
            // Tap j sits at input offset j - (halfTaps - 1) from the sample
            // before the output instant, which lies at +fraction.
            const double t = double(j - (halfTaps_ - 1)) - fraction;
            row[j] = cutoff * sinc(cutoff * t) * kaiser(t / halfWidth);
            sum += row[j];
        }
        // Unity gain at 0 Hz for every fraction, so silence stays exactly silent
        // and a constant offset does not ripple.
        for (int64_t j = 0; j < taps; ++j) {
            table_[r * taps + j] = static_cast<float>(row[j] / sum);
        }
    }
}

void AudioResampler::process(const float* interleaved, std::size_t frames,
                             std::vector<int16_t>& out) {
    const std::size_t channels = static_cast<std::size_t>(channels_);
    const float scale = 1.0f / static_cast<float>(channels_);
    if (inputRate_ == outputRate_) {
        // Same rate: only the mix-down, and nothing held back.
        for (std::size_t f = 0; f < frames; ++f) {
            float sum = 0.0f;
            for (std::size_t c = 0; c < channels; ++c) {
                sum += interleaved[f * channels + c];
            }
            out.push_back(toInt16(channels == 1 ? sum : sum * scale));
        }
        return;
    }
    const std::size_t start = history_.size();
    history_.resize(start + frames);
    float* mono = history_.data() + start;
    if (channels == 1) {
        std::copy(interleaved, interleaved + frames, mono);
    } else {
        for (std::size_t f = 0; f < frames; ++f) {
            const float* frame = interleaved + f * channels;
            float sum = 0.0f;
            for (std::size_t c = 0; c < channels; ++c) {
                sum += frame[c];
            }
            mono[f] = sum * scale;
        }
    }

    const int64_t taps = 2 * halfTaps_;
    const int64_t end = base_ + static_cast<int64_t>(history_.size());
    for (;;) {
        const int64_t position = next_ * step_;
        int64_t index = position / phases_;
        int64_t row = (position % phases_) * tableRows_;
        row = (row + phases_ / 2) / phases_;  // exact when tableRows_ == phases_
        if (row == tableRows_) {
            row = 0;
            ++index;
        }
        if (index + halfTaps_ >= end) {
            break;
        }
        const float* x = history_.data() + (index - (halfTaps_ - 1) - base_);
        const float* h = table_.data() + row * taps;
        float acc = 0.0f;
        for (int64_t j = 0; j < taps; ++j) {
            acc += x[j] * h[j];
        }
        out.push_back(toInt16(acc));
        ++next_;
    }

    // Keep only what the next output still needs.
    const int64_t needed = (next_ * step_) / phases_ - (halfTaps_ - 1);
    const int64_t drop = std::min<int64_t>(needed - base_, static_cast<int64_t>(history_.size()));
    if (drop > 0) {
        history_.erase(history_.begin(), history_.begin() + drop);
        base_ += drop;
    }
}

}  // namespace tevra
