#include <cstdio>

// The desktop application is not assembled yet. Until it is, `tevra` reports
// which capabilities are built, so that `make run` says plainly where things stand.
int main() {
    std::printf(
        "Tevra %s\n"
        "\n"
        "The desktop application (talk key, recorder, paste at the cursor) is not built yet.\n"
        "What exists so far, as a tested library:\n"
        "  - speech-to-text over Groq, OpenAI, DeepInfra, Fireworks and the relay, with failover\n"
        "  - WAV encoding and the near-silence test\n"
        "  - clean-up by a language model over chat/completions, with reply cleaning\n"
        "  - voices and their prompts: dictionary, replacements, snippets, tones\n"
        "  - rule clean-up: replacements, a capital and a closing full stop\n"
        "  - the dictation pipeline from 16-bit samples to finished text\n"
        "  - the talk-key gesture machine (tap, hold, chords)\n"
        "\n"
        "Run `make test` to exercise them.\n",
        TEVRA_VERSION);
    return 0;
}
