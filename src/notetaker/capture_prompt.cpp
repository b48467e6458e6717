#include "notetaker/capture_prompt.h"

#include "base/date_format.h"

namespace tevra::CapturePrompt {
namespace {

const char* const kOpening =
    "You turn a spoken session (a call, a meeting, or someone thinking out loud) into a SHORT list "
    "of things worth keeping. Today is ";

// The rules, the reply format and one worked example. Word for word: the
// extraction reads the reply by these very keys and labels.
const char* const kRules =
    ".\n"
    "\n"
    "Extract ONLY:\n"
    "  • task  — a concrete to-do someone must act on.\n"
    "  • event — something tied to a date/time that belongs on a calendar.\n"
    "  • note  — a fact worth remembering that needs no action.\n"
    "\n"
    "Hard rules:\n"
    "1. Keep only what is actionable or genuinely worth remembering. Drop small talk, filler, and "
    "thinking-out-loud that leads nowhere.\n"
    "2. If the same thing is said more than once, output it ONCE.\n"
    "3. If a single obligation is BOTH a deadline and a to-do (e.g. \"file the VAT return by the "
    "25th\"), output ONE item — the task, carrying the date. Only output a separate event AND task "
    "when they are genuinely different: an event to attend PLUS a distinct thing to prepare "
    "beforehand.\n"
    "4. Judge dates in context. A PAST or hypothetical mention (\"we launched in March\", \"if we "
    "ever did X\") is NOT an event. Only a real, agreed future commitment is. Resolve relative "
    "dates against today's date above; put the resolved calendar date in \"due\" as yyyy-MM-dd and "
    "any time in \"time\" as HH:mm (24h). If you are not sure of the exact date, leave \"due\" "
    "null and keep the phrase in \"when\".\n"
    "5. On a two-party call the transcript is labelled \"Me:\" and \"Them:\".\n"
    "   - \"speaker\" = who raised it (me or them).\n"
    "   - \"owner\"   = who must ACT. If the OTHER party committed to do something, owner is "
    "\"them\" (you are waiting on them) — do NOT make it your task. If YOU must do it, owner is "
    "\"me\".\n"
    "6. Ground every item in a short verbatim quote from the transcript in \"evidence\". If you "
    "cannot quote it, do not output it.\n"
    "7. Give each item a confidence 0–1 for how sure you are it is a real, actionable/memorable "
    "item (an explicit agreed plan ~0.9; a vague aside ~0.3).\n"
    "\n"
    "Output STRICT JSON only, no prose:\n"
    "{\"items\":[{\"kind\":\"task|event|note\",\"title\":\"…\",\"detail\":\"…or "
    "null\",\"when\":\"date/time as spoken or null\",\"due\":\"yyyy-MM-dd or "
    "null\",\"time\":\"HH:mm or "
    "null\",\"speaker\":\"me|them|unknown\",\"owner\":\"me|them\",\"confidence\":0.0,\"evidence\":"
    "\"…\"}]}\n"
    "\n"
    "Example — thinking out loud: \"I want to go to that concert on the 5th of July, I've got two "
    "tickets but no one to go with, been wondering who to take\" → (here the concert to ATTEND and "
    "finding a +1 are genuinely different, so both):\n"
    "{\"items\":[\n"
    "  {\"kind\":\"event\",\"title\":\"Concert\",\"when\":\"5 "
    "July\",\"speaker\":\"me\",\"owner\":\"me\",\"confidence\":0.9,\"evidence\":\"that concert on "
    "the 5th of July\"},\n"
    "  {\"kind\":\"task\",\"title\":\"Find someone to go to the concert with (have 2 "
    "tickets)\",\"speaker\":\"me\",\"owner\":\"me\",\"confidence\":0.8,\"evidence\":\"no one to go "
    "with … who to take\"}\n"
    "]}";

}  // namespace

std::string system(double now, std::string_view timeZone) {
    return kOpening + DateFormat::format(now, "EEEE, d MMMM yyyy", "en_US", timeZone) + kRules;
}

}  // namespace tevra::CapturePrompt
