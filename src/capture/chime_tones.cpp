#include "capture/chime_tones.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "stt/wav.h"

namespace tevra::ChimeTones {
namespace {

struct Partial {
    double ratio;  // of the fundamental
    double amplitude;
    double decaySec;  // time constant of its exponential decay
};

struct Voice {
    double durationSec;
    double startHz;
    double endHz;  // the pitch glides from start to end over the first 40 ms
    double attackSec;
    std::vector<Partial> partials;
};

Voice voiceOf(ChimeSound sound) {
    switch (sound) {
        case ChimeSound::start:
            return {0.08, 1100, 620, 0.003, {{1.0, 1.0, 0.018}, {2.0, 0.15, 0.010}}};
        case ChimeSound::done:
            return {
                0.5, 1568, 1568, 0.002, {{1.0, 1.0, 0.14}, {2.76, 0.4, 0.07}, {5.4, 0.15, 0.035}}};
        case ChimeSound::fail:
            break;
    }
    return {0.34,
            147,
            139,
            0.008,
            {{1.0, 1.0, 0.11}, {2.0, 0.6, 0.09}, {3.0, 0.35, 0.07}, {4.0, 0.2, 0.05}}};
}

std::vector<double> render(const Voice& voice) {
    constexpr double glideSec = 0.04;
    constexpr double fadeSec = 0.005;  // no click at the end
    const auto count = static_cast<std::size_t>(voice.durationSec * sampleRate);
    std::vector<double> out(count);
    double phase = 0;  // of the fundamental, in cycles
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        const double glide = std::min(t / glideSec, 1.0);
        const double hz = voice.startHz + (voice.endHz - voice.startHz) * glide;
        double value = 0;
        for (const Partial& p : voice.partials) {
            value += p.amplitude * std::exp(-t / p.decaySec) *
                     std::sin(2 * std::numbers::pi * phase * p.ratio);
        }
        const double attack = std::min(t / voice.attackSec, 1.0);
        const double fade = std::min((voice.durationSec - t) / fadeSec, 1.0);
        out[i] = value * attack * std::max(fade, 0.0);
        phase += hz / sampleRate;
    }
    return out;
}

}  // namespace

ByteBuffer wav(ChimeSound sound) {
    const std::vector<double> wave = render(voiceOf(sound));
    double peak = 0;
    for (double v : wave) {
        peak = std::max(peak, std::abs(v));
    }
    const double scale = peak > 0 ? 0.8 * 32767 / peak : 0;
    std::vector<int16_t> samples(wave.size());
    std::transform(wave.begin(), wave.end(), samples.begin(),
                   [scale](double v) { return static_cast<int16_t>(std::lround(v * scale)); });
    return WAV::data(samples, sampleRate);
}

}  // namespace tevra::ChimeTones
