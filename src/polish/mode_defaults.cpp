#include "polish/mode_defaults.h"

#include <string>

#include "polish/voice.h"

namespace tevra::ModeDefaults {
namespace {

// One source line per line of the text, as the model reads it.
// clang-format off
constexpr std::string_view dictateInstructions =
    "Plain dictation. Turn the transcript into the text the speaker meant to type: fix typos, mis-heard words, grammar and punctuation, drop fillers, apply self-corrections (\"scratch that\", \"no wait\"), and make clumsy phrasing read cleanly — WITHOUT changing the meaning, the language or the register. This is clean-up, not composition. Add nothing that was not said.";

constexpr std::string_view commandInstructions =
    "What was said is an INSTRUCTION to you, not text to transcribe. Carry it out and output only the requested result, ready to paste at the cursor: no preamble, no commentary, no explanation of what you did. Follow any style, tone, length or language the instruction asks for. If it asks for a draft, produce the finished draft. Use the facts given; invent nothing beyond what the draft needs.";

constexpr std::string_view emailInstructions =
    "Turn what was said into a finished, well-structured business email.\n"
    "\n"
    "STRUCTURE — keep this order:\n"
    "1. A greeting that fits the recipient: \"Szanowni Państwo,\" for a company or institution, \"Dzień dobry [imię],\" for a named individual (decline the first name when it is known). Match the language of the thread.\n"
    "2. Body — lead with the point, then the details, in short one-idea paragraphs. Turn the spoken content into clear, complete sentences and make any request explicit.\n"
    "3. A short, professional closing line that fits the ask.\n"
    "\n"
    "Keep it concise — as short as the content allows, no filler and no restating the whole request back. Do NOT write the sign-off or signature; one is appended automatically.";

constexpr std::string_view chineseFormalInstructions =
    "Turn what was said into a crisp, correctly-registered formal message in Simplified Chinese, whatever language it was dictated in. Courteous and efficient, straight to the point; number the lines when there are several items. Keep model numbers, SKUs, codes and Latin brand names exactly as given, in Latin script; translate colour names into Chinese and put the original in brackets after it (jasnoszary → 浅灰色 [jasnoszary]). Plain text only — no markdown, no tables (they break in chat apps). Do NOT add a sign-off; one is appended automatically.";

constexpr std::string_view screenshotInstructions =
    "The text below was read off the screen by OCR. Reproduce it faithfully as clean, usable text: fix obvious OCR damage (l/1, O/0, broken diacritics, split words), keep the original language, keep line and paragraph structure, keep numbers, codes and prices EXACTLY as they appear. Do not summarize, translate, comment or add anything.";
// clang-format on

}  // namespace

// clang-format off
const std::string_view formalInstructions =
    "Turn what was said into a crisp, correctly-registered formal message — the kind sent to a customer, a partner or an authority.\n"
    "\n"
    "- Open with a short greeting only if the message needs one; otherwise go straight to the point.\n"
    "- Put the matter in the first sentence, then the details. Polite, direct and concrete — never stiff, padded or corporate.\n"
    "- Hold the correct formal register for the language (Pani / Pana / Państwo in Polish; the equivalent polite register in any other language). Number the lines when there are several distinct items.\n"
    "- Preserve every fact, number, price, code, SKU, date and name exactly as given; invent nothing.\n"
    "\n"
    "LANGUAGE: write it in the SAME language the speaker used unless the mode forces another. Polish in → Polish out; English in → English out. Never translate on your own.\n"
    "\n"
    "Do NOT add a sign-off or signature; one is appended automatically.";
// clang-format on

std::vector<Mode> seed() {
    const std::string signsOff(Voice::signOffMarker);
    return {
        Mode{.slot = 0, .name = "Dictate", .instructions = std::string(dictateInstructions)},
        Mode{.slot = 1,
             .name = "Command",
             .instructions = std::string(commandInstructions),
             .isCommand = true},
        Mode{.slot = 2,
             .name = "Email",
             .instructions = std::string(emailInstructions),
             .signature = signsOff},
        Mode{.slot = 3,
             .name = "Formal message — 中文",
             .instructions = std::string(chineseFormalInstructions),
             .outputLanguage = "zh",
             .signature = signsOff},
        Mode{.slot = 4,
             .name = "Formal message",
             .instructions = std::string(formalInstructions),
             .signature = signsOff},
        Mode{.slot = 5,
             .name = "Screenshot → text",
             .instructions = std::string(screenshotInstructions),
             .isScreenshot = true},
    };
}

}  // namespace tevra::ModeDefaults
