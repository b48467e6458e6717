#include <cstdio>

// The desktop application is not assembled yet. Until it is, `tevra` reports
// which capabilities are built, so that `make run` says plainly where things stand.
int main() {
    std::printf(
        "Tevra %s\n"
        "\n"
        "The desktop application (talk key, recorder, paste at the cursor) is not built yet.\n"
        "What works so far:\n"
        "  - speech-to-text over Groq, OpenAI, DeepInfra, Fireworks and the relay, with failover\n"
        "  - clean-up by a language model, voices and their prompts, the sign-off,\n"
        "    and the rule clean-up when no model answers\n"
        "  - settings.json, keys from the environment or the keyring, the log\n"
        "  - the history database with vocabulary, voices and insights\n"
        "  - the talk-key gesture machine (tap, hold, chords)\n"
        "  - the Linux parts, tested but not yet joined into the application: the microphone\n"
        "    (PulseAudio or PipeWire), both hotkey schemes on X11, paste at the cursor\n"
        "\n"
        "Try it from the command line with tevractl, built beside this program:\n"
        "  build/release/src/tevractl dictate recording.wav\n"
        "  build/release/src/tevractl --help\n",
        TEVRA_VERSION);
    return 0;
}
