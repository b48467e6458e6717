#include "stt/wav_reader.h"

#include <gtest/gtest.h>

#include "stt/wav.h"

namespace tevra {
namespace {

std::string errorOf(const std::variant<WAV::PCM16, std::string>& result) {
    return std::holds_alternative<std::string>(result) ? std::get<std::string>(result) : "";
}

void putU32(std::string& s, size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) {
        s[at + static_cast<size_t>(i)] = static_cast<char>((v >> (8 * i)) & 0xff);
    }
}

TEST(WAVReader, ReadsWhatTheEncoderWrites) {
    const std::vector<int16_t> samples = {0, -1, 32767, -32768, 1234};
    const auto result = WAV::readPCM16(std::string_view(WAV::data(samples, 22050)));
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(result)) << errorOf(result);
    const auto& pcm = std::get<WAV::PCM16>(result);
    EXPECT_EQ(pcm.samples, samples);
    EXPECT_EQ(pcm.sampleRate, 22050);
    EXPECT_EQ(pcm.channels, 1);
}

TEST(WAVReader, KeepsTheFirstChannelAndSkipsOtherChunks) {
    // Stereo at 48 kHz, with a LIST chunk of odd size before the data.
    std::string wav(std::string_view(WAV::data(std::vector<int16_t>{10, -10, 20, -20}, 48000)));
    wav[22] = 2;                 // channels
    putU32(wav, 28, 48000 * 4);  // byte rate
    wav[32] = 4;                 // block align
    const std::string list = std::string("LIST") + std::string("\x03\0\0\0", 4) + "abc" + '\0';
    wav.insert(36, list);
    const auto result = WAV::readPCM16(wav);
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(result)) << errorOf(result);
    EXPECT_EQ(std::get<WAV::PCM16>(result).samples, (std::vector<int16_t>{10, 20}));
    EXPECT_EQ(std::get<WAV::PCM16>(result).channels, 2);
}

TEST(WAVReader, RefusesWhatItCannotRead) {
    EXPECT_EQ(errorOf(WAV::readPCM16("hello")), "not a WAV file (no RIFF/WAVE header)");
    std::string eightBit(std::string_view(WAV::data(std::vector<int16_t>{1, 2}, 8000)));
    eightBit[34] = 8;
    EXPECT_EQ(errorOf(WAV::readPCM16(eightBit)),
              "the WAV file has 8-bit samples; 16-bit PCM is needed");
    std::string floatFormat(std::string_view(WAV::data(std::vector<int16_t>{1, 2}, 8000)));
    floatFormat[20] = 3;
    EXPECT_EQ(errorOf(WAV::readPCM16(floatFormat)), "the WAV file is not PCM (format 3)");
    const std::string headerOnly = std::string(std::string_view(WAV::data({}, 8000))).substr(0, 36);
    EXPECT_EQ(errorOf(WAV::readPCM16(headerOnly)), "the WAV file has no data chunk");
}

TEST(WAVReader, ToleratesADataSizeLargerThanTheFile) {
    std::string wav(std::string_view(WAV::data(std::vector<int16_t>{5, 6, 7}, 16000)));
    putU32(wav, 40, 1000000);
    const auto result = WAV::readPCM16(wav);
    ASSERT_TRUE(std::holds_alternative<WAV::PCM16>(result)) << errorOf(result);
    EXPECT_EQ(std::get<WAV::PCM16>(result).samples, (std::vector<int16_t>{5, 6, 7}));
}

}  // namespace
}  // namespace tevra
