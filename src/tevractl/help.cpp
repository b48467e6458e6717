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
    "  notes process|list|show|delete   sessions of the notetaker, from recordings\n"
    "  update check|verify              the signed update feed: ask it, or judge a file\n"
    "  ocr IMAGE [--words] [--json]     read the text off a picture\n"
    "\n"
    "commands for a running Tevra (over the session bus):\n"
    "  record start|finish|toggle|cancel [--mode SLOT]   what the talk key does\n"
    "  window                           show Tevra's main window\n"
    "  notes start [--app NAME] | stop  the notetaker, by hand\n"
    "  status                           what Tevra is doing now\n"
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
         "and prints the translation. A TEXT that begins with a dash is taken as it is\n"
         "(\"-5 °C today\"); after -- anything is TEXT, even --to.\n"},
        {"history",
         "usage: tevractl history [--limit N] [--json]\n"
         "\n"
         "Prints the latest N dictations (default 20), newest first; with --json, one\n"
         "JSON array.\n"
         "\n"
         "exit status: 0 done (an empty history too), 1 the history database could not be\n"
         "opened, 2 a wrong command line\n"},
        {"stats",
         "usage: tevractl stats [--json]\n"
         "\n"
         "Prints the insights: words, dictations, speaking speed, fixes, latency, time\n"
         "saved, the day streaks and the applications used most; with --json, one object.\n"
         "\n"
         "exit status: 0 done, 1 the history database could not be opened, 2 a wrong\n"
         "command line\n"},
        {"record",
         "usage: tevractl record start|finish|toggle|cancel [--mode SLOT]\n"
         "\n"
         "Drives a running Tevra as its keys do: start records with the voice in SLOT\n"
         "(default 0, plain dictation), finish ends the recording and pastes the text,\n"
         "toggle does one or the other (a tap of the talk key), cancel throws the\n"
         "recording away. Bind `tevractl record toggle` to a key of your desktop's own\n"
         "shortcuts where Tevra cannot watch the keyboard (Wayland).\n"
         "\n"
         "exit status: 0 done, 1 Tevra is not running or refused (it says why), 2 a wrong\n"
         "command line\n"},
        {"window",
         "usage: tevractl window\n"
         "\n"
         "Brings a running Tevra's main window to the front.\n"},
        {"status",
         "usage: tevractl status\n"
         "\n"
         "Prints what a running Tevra is doing: the capture (idle, recording, processing)\n"
         "and the notetaker (idle, detected, recording, processing). Exit status 1 when\n"
         "Tevra is not running.\n"},
        {"keys",
         "usage: tevractl keys\n"
         "\n"
         "Prints which service keys were found, in the environment or the keyring.\n"},
        {"notes",
         "usage: tevractl notes process --mic ME.wav [--system THEM.wav] [--app NAME]\n"
         "                              [--started ISO-8601] [--json]\n"
         "       tevractl notes list [--limit N] [--json]\n"
         "       tevractl notes show ID [--json | --transcript]\n"
         "       tevractl notes delete ID\n"
         "       tevractl notes start [--app NAME] | stop\n"
         "\n"
         "process turns the two sides of a call, your microphone and the other party\n"
         "(16-bit PCM WAV files, any sample rate, the first channel), into a saved session\n"
         "exactly as Tevra does after a call: a speaker-labelled transcript, then the\n"
         "tasks, events and notes a language model finds in it. It prints the session and\n"
         "its id; --json prints the session's complete JSON form. --app names the call's\n"
         "application (default \"Notes\"); --started is when the call began (default: it\n"
         "ended just now), as 2026-07-05T14:03:00+02:00, or without the offset for local\n"
         "time. A part that fails is said on stderr and the session is saved without it.\n"
         "\n"
         "list prints the latest N sessions (default 50), newest first, one per line: id,\n"
         "title, when, how long, what it holds. show prints one session; --transcript\n"
         "prints exactly what \"Copy transcript\" copies. delete removes one.\n"
         "\n"
         "start and stop drive a running Tevra's notetaker by hand: start records a\n"
         "session now, for the application NAME (default: none named), stop ends it and\n"
         "makes the notes.\n"
         "\n"
         "exit status: 0 done, 1 the work failed (no database, no such session, or a part\n"
         "of process failed), 2 a wrong command line or a file that is not such a WAV\n"},
        {"update",
         "usage: tevractl update check [--feed URL]\n"
         "       tevractl update verify FILE [--public-key BASE64] [--current-version V]\n"
         "\n"
         "check fetches the update feed (the appcastURL setting, or URL) exactly as Tevra\n"
         "does at start and prints the decision: \"up to date\", \"update available:\n"
         "VERSION URL\" or \"rejected: REASON\". verify judges a feed file the same way,\n"
         "without the network, so that a signed feed can be checked before it is published:\n"
         "against the built-in public key or BASE64, and this version or V.\n"
         "\n"
         "exit status: 0 up to date or an update available, 1 rejected, 2 a wrong command\n"
         "line or a file that cannot be read\n"},
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
