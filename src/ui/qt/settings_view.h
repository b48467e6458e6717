#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "ui/keys_group.h"
#include "ui/qt/page_kit.h"
#include "ui/ui_state.h"

namespace tevra {

// The Settings page: every group of the settings, the Keys group, and
// "Save settings" and "Quit Tevra" at its foot. Controls edit the draft,
// which the window saves when the page is left or closed; the theme, the
// chime and the call detection save at once.
class SettingsView : public PageKit::Page {
public:
    SettingsView(UIState& state, std::function<void()> editProfile);
    // Shows the draft in the controls.
    void refresh();
    KeysGroup& keys() { return *keys_; }

private:
    void addGroup(std::string_view title, QWidget* body);
    QWidget* keysGroup();
    void showKeys();

    UIState& state_;
    std::function<void()> editProfile_;
    std::shared_ptr<KeysGroup> keys_;
    Observers::Token keysToken_;
    QLabel* signedInAs_;
    QLabel* signOff_;
    QComboBox* theme_;
    QComboBox* dictate_;
    QLabel* hotkeyNote_;
    QLineEdit* talkKey_;
    QComboBox* command_;
    QCheckBox* polish_;
    QLineEdit* languageHint_;
    QComboBox* translate_;
    QCheckBox* autoDetect_;
    QCheckBox* chime_;
    QCheckBox* crashReports_;
    std::map<std::string, QLabel*, std::less<>> keyStatus_;
    QLabel* keyProblem_;
};

}  // namespace tevra
