#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tevra {

// Converts interleaved float frames at any rate and channel count to signed
// 16-bit mono at a fixed output rate. The channels are averaged, then a
// windowed-sinc low-pass interpolates at each output instant. The position of
// every output sample is kept as an exact fraction of input samples, and the
// last input samples are kept between calls, so a recording split into
// buffers of any sizes converts to exactly the same samples as one buffer:
// no clicks at the seams and no drift over minutes.
class AudioResampler {
public:
    static constexpr int minInputRate = 1000;
    static constexpr int maxInputRate = 768000;
    static constexpr int maxChannels = 32;

    // Whether a converter from this input format can be made.
    static bool supports(int inputRate, int channels);

    // Requires supports(inputRate, channels) and outputRate > 0.
    AudioResampler(int inputRate, int channels, int outputRate);

    // Converts frames and appends the result to out. The output lags the input
    // by half the filter, 2 to 4 ms; those samples come with the next buffer.
    void process(const float* interleaved, std::size_t frames, std::vector<int16_t>& out);

    int inputRate() const { return inputRate_; }
    int channels() const { return channels_; }
    int outputRate() const { return outputRate_; }

private:
    void buildFilter();

    int inputRate_;
    int channels_;
    int outputRate_;
    int64_t step_ = 1;    // input rate over the common divisor: how far one output moves
    int64_t phases_ = 1;  // output rate over the common divisor: fractions of an input sample
    int64_t tableRows_ = 1;
    int64_t halfTaps_ = 1;      // taps on each side of an output instant
    std::vector<float> table_;  // tableRows_ rows of 2 * halfTaps_ coefficients

    std::vector<float> history_;  // mono input from absolute index base_
    int64_t base_ = 0;
    int64_t next_ = 0;  // absolute index of the next output sample
};

}  // namespace tevra
