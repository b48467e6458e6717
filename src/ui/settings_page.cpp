#include "ui/settings_page.h"

#include "notetaker/notetaker_controller.h"
#include "pill/pill_texts.h"
#include "polish/signature.h"

namespace tevra::SettingsPage {

std::string signedInAs(const WeftSettings& settings) {
    const std::string name = Signature::fullName(settings.identity());
    return name.empty() ? "not set" : name;
}

std::string signOffLine(const WeftSettings& settings) {
    const std::string signature = Signature::build(settings.identity());
    if (signature.empty()) {
        return "No sign-off yet \u2014 Email and formal messages won't sign until you add your "
               "details.";
    }
    return "Emails sign off with: " + signature.substr(0, signature.find('\n'));
}

std::vector<Option> themeOptions() {
    return {{"Follow the desktop", "system"}, {"Light", "light"}, {"Dark", "dark"}};
}

std::vector<Option> hotkeyOptions(const WeftSettings& settings) {
    const std::string key = PillTexts::talkKeyName(settings.talkKey);
    return {
        {"Talk key (" + key + ") \u2014 hold to talk \u00b7 " + key + "+number for modes", "fn"},
        {"Alt keys \u2014 Alt+1 dictate \u00b7 Alt+1\u2026Alt+6 modes", "option1"}};
}

std::string hotkeyNote(const WeftSettings& settings) {
    const std::string key = PillTexts::talkKeyName(settings.talkKey);
    return "The talk key (the default) needs an X11 session with the XInput2 and XTest "
           "extensions; without them, Tevra uses the Alt keys. " +
           key + " held alone dictates; " + key + " + a number picks a mode. " + key +
           "+6 selects text, " + key + "+7/8/9 translate.";
}

std::vector<Option> commandOptions() {
    return {{"On \u2014 speak an instruction", "option2"}, {"Off", "off"}};
}

const std::vector<Option>& translateLanguages() {
    static const std::vector<Option> languages = {
        {"English", "en"},
        {"Polski", "pl"},
        {"\u4e2d\u6587", "zh"},
        {"Ti\u1ebfng Vi\u1ec7t", "vi"},
        {"Espa\u00f1ol", "es"},
        {"Deutsch", "de"},
        {"Fran\u00e7ais", "fr"},
        {"Italiano", "it"},
        {"\u0423\u043a\u0440\u0430\u0457\u043d\u0441\u044c\u043a\u0430", "uk"},
        {"\u0420\u0443\u0441\u0441\u043a\u0438\u0439", "ru"}};
    return languages;
}

void setTheme(UIState& state, const std::string& appearance) {
    state.settings.appearance = appearance;
    if (const auto& apply = state.services().applyAppearance) {
        apply(appearance);
    }
    state.saveSettings();
}

void setSoundCues(UIState& state, bool on) {
    state.settings.soundCues = on;
    if (const auto& setChime = state.services().setChimeEnabled) {
        setChime(on);
    }
    state.saveSettings();
}

void setAutoDetect(UIState& state, bool on) {
    state.settings.notetakerAutoDetect = on;
    state.saveSettings();
    if (state.notetaker) {
        state.notetaker->setAutoDetect(on);
    }
}

}  // namespace tevra::SettingsPage
