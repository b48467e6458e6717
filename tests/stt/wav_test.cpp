#include "stt/wav.h"

#include <gtest/gtest.h>

#include "stt/wav_reader.h"

namespace tevra {
namespace {

using Samples = std::vector<int16_t>;

std::string bytes(const ByteBuffer& b) {
    return std::string(std::string_view(b));
}

std::string errorOf(const std::variant<WAV::PCM16, std::string>& result) {
    return std::holds_alternative<std::string>(result) ? std::get<std::string>(result) : "";
}

void putU32(std::string& s, size_t at, uint32_t v) {
    for (size_t i = 0; i < 4; ++i) {
        s[at + i] = static_cast<char>((v >> (8 * i)) & 0xff);
    }
}

TEST(WAV, EncodesMono16BitPCMLittleEndian) {
    using namespace std::string_literals;
    EXPECT_EQ(bytes(WAV::data(Samples{0, 1, -1, 32767, -32768}, 16000)),
              "RIFF\x2e\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\x3e\0\0\0\x7d\0\0\x02\0\x10\0"
              "data\x0a\0\0\0\0\0\x01\0\xff\xff\xff\x7f\0\x80"s);
    EXPECT_EQ(bytes(WAV::data({}, 48000)),
              "RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x80\xbb\0\0\0\x77\x01\0\x02\0\x10\0"
              "data\0\0\0\0"s);
}

TEST(WAV, NearSilenceComparesTheMeanMagnitudeStrictly) {
    EXPECT_TRUE(WAV::isNearSilent({}));
    EXPECT_FALSE(WAV::isNearSilent(Samples{120, -120, 100, -140}));  // exactly 120
    EXPECT_TRUE(WAV::isNearSilent(Samples{120, -120, 100, -139}));
    EXPECT_FALSE(WAV::isNearSilent(Samples{120, -120, 100, -139}, 119.0));
    // The magnitude of -32768 is 32768, not an overflow.
    EXPECT_FALSE(WAV::isNearSilent(Samples{-32768}, 32767.5));
    EXPECT_TRUE(WAV::isNearSilent(Samples{-32768}, 32768.5));
    // A short click in long silence stays silent.
    Samples click(16000, 0);
    click[8000] = 32767;
    click[8001] = -32768;
    EXPECT_TRUE(WAV::isNearSilent(click));
}

TEST(WAVReader, ReadsTheFirstChannelPastOtherChunksAndATooLargeDataSize) {
    const Samples samples = {0, -1, 32767, -32768, 1234};
    auto result = WAV::readPCM16(bytes(WAV::data(samples, 22050)));
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(result)) << errorOf(result);
    EXPECT_EQ(std::get<WAV::PCM16>(result).samples, samples);
    EXPECT_EQ(std::get<WAV::PCM16>(result).sampleRate, 22050);

    // Stereo at 48 kHz, with a LIST chunk of odd size before the data, whose
    // size claims more than the file holds.
    std::string wav = bytes(WAV::data(Samples{10, -10, 20, -20}, 48000));
    wav[22] = 2;                 // channels
    putU32(wav, 28, 48000 * 4);  // byte rate
    wav[32] = 4;                 // block align
    putU32(wav, 40, 1000000);
    wav.insert(36, std::string("LIST\x03\0\0\0abc\0", 12));
    result = WAV::readPCM16(wav);
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(result)) << errorOf(result);
    EXPECT_EQ(std::get<WAV::PCM16>(result).samples, (Samples{10, 20}));
    EXPECT_EQ(std::get<WAV::PCM16>(result).channels, 2);
}

TEST(WAVReader, RefusesWhatItCannotRead) {
    const std::string good = bytes(WAV::data(Samples{1, 2}, 8000));
    std::string eightBit = good, floatFormat = good, tooFast = good;
    eightBit[34] = 8;
    floatFormat[20] = 3;
    putU32(tooFast, 24, 0x80000000u);  // a rate whose byte rate no header can hold
    const std::pair<std::string, std::string> cases[] = {
        {"hello", "not a WAV file (no RIFF/WAVE header)"},
        {eightBit, "the WAV file has 8-bit samples; 16-bit PCM is needed"},
        {floatFormat, "the WAV file is not PCM (format 3)"},
        {good.substr(0, 36), "the WAV file has no data chunk"},
        {tooFast, "the WAV file's sample rate of 2147483648 Hz is too high"},
    };
    for (const auto& [file, error] : cases) {
        EXPECT_EQ(errorOf(WAV::readPCM16(file)), error);
    }
}

}  // namespace
}  // namespace tevra
