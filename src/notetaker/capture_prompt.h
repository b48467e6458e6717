#pragma once

#include <string>
#include <string_view>

namespace tevra::CapturePrompt {

// The system prompt of an extraction: in English whatever the session's
// language, with today's date ("Sunday, 5 July 2026") in the time zone given,
// or the process's own when it is empty, so that the model can resolve
// "next Friday".
std::string system(double now, std::string_view timeZone = {});

}  // namespace tevra::CapturePrompt
