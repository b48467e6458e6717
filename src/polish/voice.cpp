#include "polish/voice.h"

#include <array>

#include "base/text.h"

namespace tevra::Voice {

// One source line per line of the text, as the model reads it.
// clang-format off
const std::string_view houseStyle =
    "HOUSE STYLE:\n"
    "- Right-size to the CONTEXT, not to the length of the dictation. A terse dictation becomes a complete, properly formed message; a rambling one gets tightened.\n"
    "- Stay faithful to the MEANING, not the literal wording — improve clarity and tone, don't transcribe verbatim.\n"
    "- Preserve every fact exactly as given: numbers, prices, dates, SKUs, model codes, quantities, tracking numbers, technical terms.\n"
    "- NEVER invent facts, prices, dates, deadlines or promises that were not said.\n"
    "- No placeholders like [Numer]. If something is missing, say we will provide it or ask for it.\n"
    "- No filler and no corporate padding (\"mam nadzieję, że mail zastanie Państwa w dobrym zdrowiu\"). Write like a person, not a generator.\n"
    "- Do NOT write a sign-off or signature — one is appended automatically.";

const std::string_view polishRegister =
    "POLISH BUSINESS REGISTER — MANDATORY:\n"
    "- Formal second person only: Pani / Pana / Państwa. NEVER Ty / Ciebie / Twój.\n"
    "- The company speaks in the PLURAL: \"dziękujemy / informujemy / przesyłamy\" — never \"dziękuję\".\n"
    "- Greeting \"Dzień dobry\" (never \"Cześć\" or \"Witam\" to a stranger); \"Szanowni Państwo\" for companies and institutions.\n"
    "- The sentence after the greeting continues it: it starts lowercase (\"w załączeniu przesyłamy…\").\n"
    "- 100% Polish. No stray English words.\n"
    "- Pronoun direction: Państwa/Pana/Pani = the RECIPIENT's things; nasz/nasza/nasze = OURS. \"Nasz numer telefonu to…\" — never \"Numer telefonu do Państwa to…\".\n"
    "- When the recipient's first name is known, decline it (wołacz): Alicja → \"Dzień dobry Pani Alicjo,\", Marek → \"Dzień dobry Panie Marku,\".";
// clang-format on

const std::string_view signOffMarker = "signs-off";

std::string detectLanguage(std::string_view text) {
    // Normalised first so that a letter typed as base plus combining mark
    // still counts as the Polish letter it shows.
    const std::string composed = text::nfc(text);

    static const auto han = text::Regex::compile("\\p{Han}");
    if (han && han->matches(composed)) {
        return "zh";
    }
    static const auto polishLetter = text::Regex::compile("[ąćęłńóśźżĄĆĘŁŃÓŚŹŻ]");
    if (polishLetter && polishLetter->matches(composed)) {
        return "pl";
    }

    // The blanks around the text let a marker match at its very start or end.
    // " zamówienie" has no closing blank so that its inflected forms match too.
    static constexpr std::array<std::string_view, 8> markers = {
        " jest ",       " nie ",       " oraz ",    " przesyłamy ",
        " dziękujemy ", " zamówienie", " państwa ", " proszę "};
    const std::string padded = " " + text::lowercase(composed) + " ";
    for (const auto marker : markers) {
        if (padded.find(marker) != std::string::npos) {
            return "pl";
        }
    }
    return "en";
}

}  // namespace tevra::Voice
