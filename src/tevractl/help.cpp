#include <map>

#include "tevractl/commands.h"

namespace tevra::ctl {

const char* const kUsage =
    "usage: tevractl COMMAND [OPTIONS]\n"
    "\n"
    "Tevra from the command line: the same settings, keys, voices and history as the\n"
    "desktop application.\n"
    "\n"
    "commands:\n"
    "  dictate FILE.wav [--mode SLOT]   transcribe and polish a recording, print the text\n"
    "  translate TEXT [--to CODE]       translate a text with the language model\n"
    "  history [--limit N] [--json]     the latest dictations\n"
    "  stats [--json]                   words, speed, streaks and the applications used\n"
    "  keys                             which service keys are present\n"
    "  ocr IMAGE [--words] [--json]     read the text off a picture\n"
    "\n"
    "Run `tevractl COMMAND --help` for one command.\n";

std::string helpFor(const std::string& command) {
    static const std::map<std::string, std::string> help = {
        {"dictate",
         "usage: tevractl dictate FILE.wav [--mode SLOT]\n"
         "\n"
         "Transcribes a 16-bit PCM WAV file (any sample rate; the first channel of a stereo\n"
         "file), polishes it with the voice in SLOT (default 0, plain dictation) and prints\n"
         "the finished text. The dictation is added to the history as from \"tevractl\".\n"
         "If every speech service fails, the audio is kept in the data directory's \"failed\"\n"
         "folder and its path is printed.\n"
         "\n"
         "exit status: 0 done, 1 the dictation failed, 2 a wrong command line or file\n"},
        {"translate",
         "usage: tevractl translate TEXT [--to CODE]\n"
         "\n"
         "Translates TEXT into the language CODE (default: the translateTarget setting)\n"
         "and prints the translation.\n"},
        {"history",
         "usage: tevractl history [--limit N] [--json]\n"
         "\n"
         "Prints the latest N dictations (default 20), newest first; with --json, one\n"
         "JSON array.\n"},
        {"stats",
         "usage: tevractl stats [--json]\n"
         "\n"
         "Prints the insights: words, dictations, speaking speed, fixes, latency, time\n"
         "saved, the day streaks and the applications used most; with --json, one object.\n"},
        {"keys",
         "usage: tevractl keys\n"
         "\n"
         "Prints which service keys were found, in the environment or the keyring.\n"},
        {"ocr",
         "usage: tevractl ocr IMAGE [--words] [--json]\n"
         "\n"
         "Reads the text off a picture (PNG, JPEG, ...) with Tesseract, offline: its lines\n"
         "as the screenshot voice gets them. With --words, the words as the selection tool\n"
         "reads them, one reading line a line: line, column, height and left edge\n"
         "(0 to 1, from the bottom left), then the words. With --json, the words in\n"
         "reading order with their boxes, line and column.\n"
         "\n"
         "exit status: 0 done, 1 no text found, 2 a wrong command line or not a readable\n"
         "picture\n"},
    };
    const auto it = help.find(command);
    return it == help.end() ? std::string() : it->second;
}

}  // namespace tevra::ctl
