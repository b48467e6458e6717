// Writes the chime's cues as WAV files into the directory given, at build time.
#include <cstdio>
#include <fstream>
#include <string>

#include "capture/chime_tones.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_DIRECTORY\n", argv[0]);
        return 2;
    }
    const std::string dir = argv[1];
    const std::pair<tevra::ChimeSound, const char*> cues[] = {
        {tevra::ChimeSound::start, "start.wav"},
        {tevra::ChimeSound::done, "done.wav"},
        {tevra::ChimeSound::fail, "fail.wav"},
    };
    for (const auto& [sound, name] : cues) {
        const tevra::ByteBuffer wav = tevra::ChimeTones::wav(sound);
        std::ofstream out(dir + "/" + name, std::ios::binary | std::ios::trunc);
        out.write(wav.data(), static_cast<std::streamsize>(wav.size()));
        if (!out) {
            std::fprintf(stderr, "cannot write %s/%s\n", dir.c_str(), name);
            return 1;
        }
    }
    return 0;
}
