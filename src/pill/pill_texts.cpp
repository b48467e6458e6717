#include "pill/pill_texts.h"

#include <array>
#include <charconv>
#include <utility>

#include "base/date_format.h"
#include "core/weft_settings.h"

namespace tevra::PillTexts {

std::string talkKeyName(const std::string& keysym) {
    static constexpr std::array<std::pair<const char*, const char*>, 9> names{{
        {"Control_R", "Right Ctrl"},
        {"Control_L", "Left Ctrl"},
        {"Alt_R", "Right Alt"},
        {"Alt_L", "Left Alt"},
        {"Super_R", "Right Super"},
        {"Super_L", "Left Super"},
        {"Shift_R", "Right Shift"},
        {"Shift_L", "Left Shift"},
        {"ISO_Level3_Shift", "AltGr"},
    }};
    for (const auto& [name, friendly] : names) {
        if (keysym == name) {
            return friendly;
        }
    }
    return keysym;
}

std::string keyLabel(const std::string& fnLabel, const WeftSettings& settings) {
    // "Fn" alone is slot 0; "Fn N" is the talk key with digit N.
    const std::string digit = fnLabel.size() > 3 ? fnLabel.substr(3) : "";
    if (settings.hotkey != "fn") {
        int slot = 0;
        std::from_chars(digit.data(), digit.data() + digit.size(), slot);
        return "Alt+" + std::to_string((slot + 1) % 10);
    }
    const std::string talkKey = talkKeyName(settings.talkKey);
    return digit.empty() ? talkKey : talkKey + "+" + digit;
}

std::string emptyHistory(const WeftSettings& settings) {
    return "Nothing yet \u2014 hold " + keyLabel("Fn", settings) + " and speak.";
}

std::string rowTime(double timestamp, double now) {
    const bool today = DateFormat::format(timestamp, "yyyy-MM-dd", "") ==
                       DateFormat::format(now, "yyyy-MM-dd", "");
    return DateFormat::format(timestamp, today ? "HH:mm" : "d MMM", "");
}

}  // namespace tevra::PillTexts
