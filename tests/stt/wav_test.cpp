#include "stt/wav.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

namespace tevra {
namespace {

uint32_t u32At(const std::string& s, size_t off) {
    uint32_t v = 0;
    for (int i = 3; i >= 0; --i) {
        v = (v << 8) | static_cast<uint8_t>(s[off + static_cast<size_t>(i)]);
    }
    return v;
}

uint16_t u16At(const std::string& s, size_t off) {
    return static_cast<uint16_t>(static_cast<uint8_t>(s[off]) |
                                 (static_cast<uint8_t>(s[off + 1]) << 8));
}

TEST(WAV, HeaderDescribesMono16BitPCM) {
    const std::vector<int16_t> samples = {0, 1, -1, 32767, -32768};
    const std::string wav(std::string_view(WAV::data(samples, 16000)));
    ASSERT_EQ(wav.size(), 44u + 10u);
    EXPECT_EQ(wav.substr(0, 4), "RIFF");
    EXPECT_EQ(u32At(wav, 4), 10u + 36u);
    EXPECT_EQ(wav.substr(8, 8), "WAVEfmt ");
    EXPECT_EQ(u32At(wav, 16), 16u);
    EXPECT_EQ(u16At(wav, 20), 1u);
    EXPECT_EQ(u16At(wav, 22), 1u);
    EXPECT_EQ(u32At(wav, 24), 16000u);
    EXPECT_EQ(u32At(wav, 28), 32000u);
    EXPECT_EQ(u16At(wav, 32), 2u);
    EXPECT_EQ(u16At(wav, 34), 16u);
    EXPECT_EQ(wav.substr(36, 4), "data");
    EXPECT_EQ(u32At(wav, 40), 10u);
    // Samples little-endian, nothing after them.
    EXPECT_EQ(u16At(wav, 44 + 6), 0x7fffu);
    EXPECT_EQ(u16At(wav, 44 + 8), 0x8000u);
    EXPECT_EQ(u16At(wav, 44 + 4), 0xffffu);
}

TEST(WAV, ZeroSamplesGiveAValidEmptyFile) {
    const std::string wav(std::string_view(WAV::data({}, 48000)));
    ASSERT_EQ(wav.size(), 44u);
    EXPECT_EQ(u32At(wav, 4), 36u);
    EXPECT_EQ(u32At(wav, 40), 0u);
    EXPECT_EQ(u32At(wav, 28), 96000u);
}

TEST(WAV, NearSilenceComparesTheMeanMagnitudeStrictly) {
    EXPECT_TRUE(WAV::isNearSilent({}));
    const std::vector<int16_t> exactly120 = {120, -120, 100, -140};
    EXPECT_FALSE(WAV::isNearSilent(exactly120));
    const std::vector<int16_t> justBelow = {120, -120, 100, -139};
    EXPECT_TRUE(WAV::isNearSilent(justBelow));
    EXPECT_FALSE(WAV::isNearSilent(justBelow, 119.0));
    // The magnitude of -32768 is 32768, not an overflow.
    const std::vector<int16_t> loudest = {-32768};
    EXPECT_FALSE(WAV::isNearSilent(loudest, 32768.0 - 0.5));
    EXPECT_TRUE(WAV::isNearSilent(loudest, 32768.5));
}

TEST(WAV, AShortClickInLongSilenceStaysSilent) {
    std::vector<int16_t> samples(16000, 0);
    samples[8000] = 32767;
    samples[8001] = -32768;
    EXPECT_TRUE(WAV::isNearSilent(samples));
}

}  // namespace
}  // namespace tevra
