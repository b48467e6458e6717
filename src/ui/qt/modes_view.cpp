#include "ui/qt/modes_view.h"

#include <QHBoxLayout>

#include "core/weft_runtime.h"
#include "polish/signature.h"
#include "ui/list_pages.h"
#include "ui/modes_page.h"
#include "ui/settings_page.h"

namespace tevra {

using namespace PageKit;

ModesView::ModesView(UIState& state, std::function<void()> editProfile)
    : Page(ModesPage::title, ModesPage::subtitle),
      state_(state),
      editProfile_(std::move(editProfile)) {
    cards_ = new QVBoxLayout;
    content()->addLayout(cards_);

    QFrame* formal = card();
    auto* formalLayout = new QVBoxLayout(formal);
    formalLayout->addWidget(heading(ModesPage::formalHeading));
    auto* row = new QHBoxLayout;
    language_ = choice("Formal language");
    for (const auto& language : SettingsPage::translateLanguages()) {
        language_->addItem(qs(language.label), qs(language.value));
    }
    QPushButton* add = button(ModesPage::addFormalLabel);
    row->addWidget(language_, 1);
    row->addWidget(add);
    formalLayout->addLayout(row);
    formalLayout->addWidget(note(ModesPage::formalNote));
    content()->addWidget(formal);
    QObject::connect(add, &QPushButton::clicked, this, [this] {
        ModesPage::addFormalLanguage(state_, language_->currentData().toString().toStdString());
    });

    QPushButton* reset = button(ModesPage::resetLabel);
    QObject::connect(reset, &QPushButton::clicked, this,
                     [this] { ModesPage::resetToDefaults(state_); });
    auto* foot = new QHBoxLayout;
    foot->addWidget(reset);
    foot->addStretch(1);
    content()->addLayout(foot);
    refresh();
}

void ModesView::refresh() {
    clear(cards_);
    const auto host = ModesPage::signatureHostSlot(state_.modes);
    for (const Mode& mode : state_.modes) {
        cards_->addWidget(modeCard(mode, host == mode.slot));
    }
}

QWidget* ModesView::modeCard(const Mode& mode, bool hostsSignature) {
    QFrame* box = card();
    box->setAccessibleName(qs(mode.name));
    auto* layout = new QVBoxLayout(box);
    auto* top = new QHBoxLayout;
    const auto key = ModesPage::keyLabel(mode, state_.runtime.settings());
    QLabel* keyLabel = badge(key.value_or("no key"));
    top->addWidget(keyLabel);
    top->addWidget(heading(mode.name), 1);
    if (mode.isScreenshot) {
        top->addWidget(badge(ModesPage::screenshotBadge));
    }
    QCheckBox* enabled = toggle("On");
    enabled->setChecked(mode.enabled);
    enabled->setAccessibleName(qs(mode.name + " on"));
    enabled->setToolTip(qs(ModesPage::switchHelp(mode.enabled)));
    QObject::connect(enabled, &QCheckBox::toggled, this,
                     [this, mode](bool on) { ModesPage::setEnabled(state_, mode, on); });
    top->addWidget(enabled);
    if (ModesPage::isRemovable(mode)) {
        QPushButton* remove = button(removeLabel, std::string(removeLabel) + " " + mode.name);
        QObject::connect(remove, &QPushButton::clicked, this,
                         [this, slot = mode.slot] { ModesPage::remove(state_, slot); });
        top->addWidget(remove);
    }
    layout->addLayout(top);
    layout->addWidget(note(mode.summary()));
    if (hostsSignature) {
        QFrame* editor = card();
        editor->setBackgroundRole(QPalette::AlternateBase);
        auto* editorLayout = new QVBoxLayout(editor);
        editorLayout->addWidget(heading(ModesPage::signatureHeading));
        const std::string signature = Signature::build(state_.runtime.settings().identity());
        if (signature.empty()) {
            editorLayout->addWidget(note(ModesPage::noSignature));
        } else {
            editorLayout->addWidget(label(signature));
            editorLayout->addWidget(note(ModesPage::signatureNote));
        }
        editorLayout->addLayout(buttonRow(ModesPage::editProfileLabel, editProfile_));
        layout->addWidget(editor);
    }
    return box;
}

}  // namespace tevra
