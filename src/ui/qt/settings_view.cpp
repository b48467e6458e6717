#include "ui/qt/settings_view.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QSignalBlocker>

#include "ui/settings_page.h"

namespace tevra {

using namespace PageKit;
namespace S = SettingsPage;

namespace {

void fill(QComboBox* box, const std::vector<S::Option>& options) {
    const QSignalBlocker quiet(box);
    box->clear();
    for (const auto& option : options) {
        box->addItem(qs(option.label), qs(option.value));
    }
}

void select(QComboBox* box, const std::string& value) {
    const QSignalBlocker quiet(box);
    const int index = box->findData(qs(value));
    box->setCurrentIndex(index < 0 ? 0 : index);
}

std::string selected(const QComboBox* box) {
    return box->currentData().toString().toStdString();
}

}  // namespace

SettingsView::SettingsView(UIState& state, std::function<void()> editProfile)
    : Page(S::title, S::subtitle), state_(state), editProfile_(std::move(editProfile)) {
    WeftSettings& draft = state_.settings;

    {  // Profile
        auto* body = new QWidget;
        auto* layout = new QVBoxLayout(body);
        layout->addLayout(buttonRow(S::editProfileLabel, editProfile_));
        layout->addWidget(note(S::profileNote));
        signedInAs_ = label("");
        signOff_ = note("");
        layout->addWidget(signedInAs_);
        layout->addWidget(signOff_);
        addGroup(S::profileGroup, body);
    }
    {  // Appearance
        auto* body = new QWidget;
        auto* form = new QFormLayout(body);
        theme_ = choice(S::themeLabel);
        fill(theme_, S::themeOptions());
        form->addRow(qs(S::themeLabel), theme_);
        form->addRow(note(S::themeNote));
        QObject::connect(theme_, &QComboBox::currentIndexChanged, this,
                         [this] { S::setTheme(state_, selected(theme_)); });
        addGroup(S::appearanceGroup, body);
    }
    {  // Hotkeys
        auto* body = new QWidget;
        auto* form = new QFormLayout(body);
        dictate_ = choice(S::dictateLabel);
        form->addRow(qs(S::dictateLabel), dictate_);
        talkKey_ = field("Control_R", S::talkKeyLabel);
        form->addRow(qs(S::talkKeyLabel), talkKey_);
        hotkeyNote_ = note("");
        form->addRow(hotkeyNote_);
        command_ = choice(S::commandLabel);
        fill(command_, S::commandOptions());
        form->addRow(qs(S::commandLabel), command_);
        form->addRow(note(S::commandNote));
        QObject::connect(dictate_, &QComboBox::currentIndexChanged, this,
                         [this, &draft] { draft.hotkey = selected(dictate_); });
        QObject::connect(talkKey_, &QLineEdit::textChanged, this, [this, &draft] {
            draft.talkKey = talkKey_->text().trimmed().toStdString();
        });
        QObject::connect(command_, &QComboBox::currentIndexChanged, this,
                         [this, &draft] { draft.commandHotkey = selected(command_); });
        addGroup(S::hotkeysGroup, body);
    }
    {  // Dictation
        auto* body = new QWidget;
        auto* form = new QFormLayout(body);
        polish_ = toggle(S::polishLabel);
        form->addRow(polish_);
        form->addRow(note(S::polishNote));
        languageHint_ = field("", S::languageHintLabel);
        form->addRow(qs(S::languageHintLabel), languageHint_);
        QObject::connect(polish_, &QCheckBox::toggled, this,
                         [&draft](bool on) { draft.polishEnabled = on; });
        QObject::connect(languageHint_, &QLineEdit::textChanged, this, [this, &draft] {
            draft.languageHint = languageHint_->text().toStdString();
        });
        addGroup(S::dictationGroup, body);
    }
    {  // Translate
        auto* body = new QWidget;
        auto* form = new QFormLayout(body);
        translate_ = choice(S::translateLabel);
        fill(translate_, S::translateLanguages());
        form->addRow(qs(S::translateLabel), translate_);
        form->addRow(note(S::translateNote));
        QObject::connect(translate_, &QComboBox::currentIndexChanged, this,
                         [this, &draft] { draft.translateTarget = selected(translate_); });
        addGroup(S::translateGroup, body);
    }
    {  // Notetaker
        auto* body = new QWidget;
        auto* layout = new QVBoxLayout(body);
        autoDetect_ = toggle(S::autoDetectLabel);
        layout->addWidget(autoDetect_);
        layout->addWidget(note(S::autoDetectNote));
        QObject::connect(autoDetect_, &QCheckBox::toggled, this,
                         [this](bool on) { S::setAutoDetect(state_, on); });
        addGroup(S::notetakerGroup, body);
    }
    {  // Feedback
        auto* body = new QWidget;
        auto* layout = new QVBoxLayout(body);
        chime_ = toggle(S::chimeLabel);
        crashReports_ = toggle(S::crashReportsLabel);
        layout->addWidget(chime_);
        layout->addWidget(crashReports_);
        layout->addWidget(note(S::crashReportsNote));
        QObject::connect(chime_, &QCheckBox::toggled, this,
                         [this](bool on) { S::setSoundCues(state_, on); });
        QObject::connect(crashReports_, &QCheckBox::toggled, this,
                         [&draft](bool on) { draft.crashReportsEnabled = on; });
        addGroup(S::feedbackGroup, body);
    }
    addGroup(KeysGroup::title, keysGroup());

    auto* foot = new QHBoxLayout;
    QPushButton* save = button(S::saveLabel);
    QPushButton* quit = button(S::quitLabel);
    save->setDefault(true);
    QObject::connect(save, &QPushButton::clicked, this, [this] { state_.saveSettings(); });
    QObject::connect(quit, &QPushButton::clicked, this, [this] {
        if (const auto& quitting = state_.services().quit) {
            quitting();
        }
    });
    foot->addWidget(save);
    foot->addStretch(1);
    foot->addWidget(quit);
    content()->addLayout(foot);
    refresh();
}

void SettingsView::addGroup(std::string_view title, QWidget* body) {
    content()->addWidget(heading(title));
    QFrame* box = card();
    box->setAccessibleName(qs(title));
    auto* layout = new QVBoxLayout(box);
    layout->addWidget(body);
    content()->addWidget(box);
}

QWidget* SettingsView::keysGroup() {
    auto* body = new QWidget;
    auto* form = new QFormLayout(body);
    form->addRow(note(KeysGroup::note));
    keys_ = KeysGroup::create(state_);
    for (const auto& service : KeysGroup::services) {
        auto* row = new QHBoxLayout;
        QLineEdit* input = field("paste a new key", std::string(service.label) + " key");
        input->setEchoMode(QLineEdit::Password);
        QPushButton* save =
            button(KeysGroup::saveLabel, std::string(KeysGroup::saveLabel) + " " + service.label);
        QLabel* status = note("");
        keyStatus_[service.account] = status;
        row->addWidget(input, 1);
        row->addWidget(save);
        auto* cell = new QVBoxLayout;
        cell->addLayout(row);
        cell->addWidget(status);
        form->addRow(qs(service.label), cell);
        const auto saving = [this, input, account = std::string(service.account)] {
            std::string key = input->text().toStdString();
            // The field forgets the key at once; the keyring keeps it.
            input->clear();
            keys_->save(account, std::move(key));
        };
        QObject::connect(save, &QPushButton::clicked, this, saving);
        QObject::connect(input, &QLineEdit::returnPressed, this, saving);
    }
    keyProblem_ = note("");
    keyProblem_->setVisible(false);
    form->addRow(keyProblem_);
    keysToken_ = keys_->observe([this] { showKeys(); });
    showKeys();
    return body;
}

void SettingsView::showKeys() {
    for (const auto& service : KeysGroup::services) {
        const QString text = qs(keys_->status(service.account));
        keyStatus_[service.account]->setText(text);
        keyStatus_[service.account]->setAccessibleName(qs(service.label) + ": " + text);
    }
    keyProblem_->setText(qs(keys_->problem()));
    keyProblem_->setVisible(!keys_->problem().empty());
}

void SettingsView::refresh() {
    const WeftSettings& draft = state_.settings;
    signedInAs_->setText(qs(std::string(S::signedInAsLabel) + ": " + S::signedInAs(draft)));
    signedInAs_->setAccessibleName(signedInAs_->text());
    signOff_->setText(qs(S::signOffLine(draft)));
    select(theme_, draft.appearance);
    fill(dictate_, S::hotkeyOptions(draft));
    select(dictate_, draft.hotkey);
    hotkeyNote_->setText(qs(S::hotkeyNote(draft)));
    for (auto [field, text] :
         {std::pair{talkKey_, &draft.talkKey}, std::pair{languageHint_, &draft.languageHint}}) {
        if (field->text() != qs(*text)) {
            const QSignalBlocker quiet(field);
            field->setText(qs(*text));
        }
    }
    select(command_, draft.commandHotkey);
    for (auto [box, on] :
         {std::pair{polish_, draft.polishEnabled},
          std::pair{autoDetect_, draft.notetakerAutoDetect}, std::pair{chime_, draft.soundCues},
          std::pair{crashReports_, draft.crashReportsEnabled}}) {
        const QSignalBlocker quiet(box);
        box->setChecked(on);
    }
    select(translate_, draft.translateTarget);
}

}  // namespace tevra
