#pragma once

#include <functional>

#include "ui/qt/page_kit.h"
#include "ui/ui_state.h"

namespace tevra {

// The Modes page: a card per voice with its key, name, summary, switch and
// (for added voices) "Remove"; the sign-off on its host card; the formal
// voices in other languages; the reset.
class ModesView : public PageKit::Page {
public:
    // editProfile opens the profile editor.
    ModesView(UIState& state, std::function<void()> editProfile);
    void refresh();

private:
    QWidget* modeCard(const Mode& mode, bool hostsSignature);

    UIState& state_;
    std::function<void()> editProfile_;
    QVBoxLayout* cards_;
    QComboBox* language_;
};

}  // namespace tevra
