#include "support/speech_samples.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/child_process.h"

namespace tevra::testing {

std::vector<int16_t> spokenSamples(const std::string& text, int sampleRate, int channels) {
    namespace fs = std::filesystem;
    std::string directory = (fs::temp_directory_path() / "tevra-speech-XXXXXX").string();
    if (!mkdtemp(directory.data())) {
        throw std::runtime_error("cannot make a directory for speech");
    }
    const std::string wav = directory + "/speech.wav";
    const std::string raw = directory + "/speech.raw";
    std::vector<int16_t> samples;
    try {
        runProgram({"espeak-ng", "-w", wav, text});
        runProgram({"sox", wav, "-t", "raw", "-e", "signed-integer", "-b", "16", "-L", "-r",
                    std::to_string(sampleRate), "-c", std::to_string(channels), raw});
        std::ifstream in(raw, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)), {});
        samples.resize(bytes.size() / sizeof(int16_t));
        std::copy(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(samples.size() * 2),
                  reinterpret_cast<char*>(samples.data()));
    } catch (...) {
        fs::remove_all(directory);
        throw;
    }
    fs::remove_all(directory);
    return samples;
}

}  // namespace tevra::testing
