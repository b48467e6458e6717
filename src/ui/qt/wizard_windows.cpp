#include "ui/qt/wizard_windows.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QSignalBlocker>

namespace tevra {

using namespace PageKit;

WizardView::WizardView(OnboardingWizard& wizard, std::shared_ptr<OnboardingWizard> owned)
    : owned_(std::move(owned)), wizard_(wizard) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(32, 24, 32, 20);
    auto* head = new QHBoxLayout;
    QLabel* name = heading("Tevra");
    head->addWidget(name);
    head->addWidget(note(wizard_.headLine()), 1);
    dots_ = new QLabel;
    head->addWidget(dots_);
    outer->addLayout(head);
    outer->addSpacing(10);
    body_ = new QVBoxLayout;
    outer->addLayout(body_, 1);
    auto* foot = new QHBoxLayout;
    left_ = button("Back");
    right_ = button("Continue");
    right_->setDefault(true);
    foot->addWidget(left_);
    foot->addStretch(1);
    foot->addWidget(right_);
    outer->addLayout(foot);
    QObject::connect(left_, &QPushButton::clicked, this, [this] { wizard_.left(); });
    QObject::connect(right_, &QPushButton::clicked, this, [this] { wizard_.right(); });
    token_ = wizard_.observe([this] {
        if (wizard_.step != shownStep_) {
            rebuild();
        } else {
            refreshMicrophone();
        }
    });
    rebuild();
}

void WizardView::rebuild() {
    shownStep_ = wizard_.step;
    clear(body_);
    preview_ = nullptr;
    styleRows_ = nullptr;
    micStatus_ = micDetail_ = nullptr;
    allow_ = nullptr;
    QString dots;
    for (int step = 0; step <= OnboardingWizard::lastStep; ++step) {
        dots += step == wizard_.step ? QStringLiteral("\u25cf ") : QStringLiteral("\u25cb ");
    }
    dots_->setText(dots.trimmed());
    dots_->setAccessibleName(
        QStringLiteral("Step %1 of %2").arg(wizard_.step + 1).arg(OnboardingWizard::lastStep + 1));
    QLabel* title = heading(wizard_.title());
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    title->setFont(font);
    body_->addWidget(title);
    switch (wizard_.step) {
        case 0:
            body_->addWidget(welcome());
            break;
        case 1:
            body_->addWidget(details());
            break;
        case 2:
            body_->addWidget(signOff());
            break;
        default:
            body_->addWidget(microphone());
            break;
    }
    body_->addStretch(1);
    const auto leftLabel = wizard_.leftLabel();
    left_->setVisible(leftLabel.has_value());
    left_->setText(qs(leftLabel.value_or("")));
    left_->setAccessibleName(left_->text());
    right_->setText(qs(wizard_.rightLabel()));
    right_->setAccessibleName(right_->text());
}

QWidget* WizardView::welcome() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label(OnboardingWizard::welcomeText));
    for (const auto& item : OnboardingWizard::welcomeItems) {
        layout->addSpacing(6);
        layout->addWidget(heading(item.heading));
        layout->addWidget(note(item.line));
    }
    return box;
}

QWidget* WizardView::details() {
    auto* box = new QWidget;
    auto* form = new QFormLayout(box);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(note(OnboardingWizard::detailsText));
    WeftSettings& draft = wizard_.draft;
    std::string* fields[] = {&draft.userFirstName, &draft.userLastName, &draft.userEmail,
                             &draft.userPhone, &draft.userCompany};
    for (std::size_t i = 0; i < std::size(fields); ++i) {
        QLineEdit* input = field("", OnboardingWizard::detailFields[i]);
        input->setText(qs(*fields[i]));
        QObject::connect(
            input, &QLineEdit::textChanged, this,
            [target = fields[i]](const QString& text) { *target = text.toStdString(); });
        form->addRow(qs(OnboardingWizard::detailFields[i]), input);
    }
    return box;
}

QWidget* WizardView::signOff() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(note(OnboardingWizard::signOffText));
    auto* group = new QButtonGroup(box);
    for (const auto& style : OnboardingWizard::styles) {
        auto* radio = new QRadioButton(qs(style.label));
        radio->setAccessibleName(qs(style.label));
        radio->setChecked(wizard_.draft.signatureStyle == style.value);
        group->addButton(radio);
        layout->addWidget(radio);
        const std::string sample = wizard_.signOff(style.value);
        QLabel* under = note(sample.empty() ? "\u2014" : sample.substr(0, sample.find('\n')));
        under->setContentsMargins(24, 0, 0, 0);
        layout->addWidget(under);
        QObject::connect(radio, &QRadioButton::toggled, this, [this, value = style.value](bool on) {
            if (on) {
                wizard_.draft.signatureStyle = value;
                // The editor comes and goes with the style.
                QMetaObject::invokeMethod(
                    this, [this] { rebuild(); }, Qt::QueuedConnection);
            }
        });
    }
    if (const auto editorHeading = wizard_.signatureEditorHeading()) {
        layout->addWidget(note(*editorHeading));
        auto* editor = new QPlainTextEdit(qs(wizard_.draft.userSignature));
        editor->setAccessibleName(qs(*editorHeading));
        editor->setTabChangesFocus(true);
        editor->setFixedHeight(editor->fontMetrics().lineSpacing() * 4 + 12);
        QObject::connect(editor, &QPlainTextEdit::textChanged, this, [this, editor] {
            wizard_.draft.userSignature = editor->toPlainText().toStdString();
            preview_->setText(qs(wizard_.previewText()));
        });
        layout->addWidget(editor);
    }
    layout->addWidget(note(OnboardingWizard::previewHeading));
    preview_ = label(wizard_.previewText());
    layout->addWidget(preview_);
    return box;
}

QWidget* WizardView::microphone() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label(OnboardingWizard::microphoneText));
    micStatus_ = heading("");
    micDetail_ = note("");
    allow_ = button(OnboardingWizard::allowLabel);
    QObject::connect(allow_, &QPushButton::clicked, this, [this] { wizard_.requestMicrophone(); });
    layout->addWidget(micStatus_);
    layout->addWidget(micDetail_);
    auto* row = new QHBoxLayout;
    row->addWidget(allow_);
    row->addStretch(1);
    layout->addLayout(row);
    layout->addWidget(note(OnboardingWizard::typingNote));
    if (wizard_.needsSpeechKey()) {
        layout->addSpacing(8);
        layout->addWidget(heading(OnboardingWizard::keyHeading));
        layout->addWidget(note(OnboardingWizard::keyNote));
        auto* keyRow = new QHBoxLayout;
        QComboBox* service = choice("Speech service");
        service->addItem(QStringLiteral("Groq"), QString(OnboardingWizard::keyServices[0]));
        service->addItem(QStringLiteral("OpenAI"), QString(OnboardingWizard::keyServices[1]));
        QLineEdit* key = field("paste your key", "Speech service key");
        key->setEchoMode(QLineEdit::Password);
        QPushButton* save = button("Save key");
        QLabel* saved = note("");
        keyRow->addWidget(service);
        keyRow->addWidget(key, 1);
        keyRow->addWidget(save);
        layout->addLayout(keyRow);
        layout->addWidget(saved);
        QObject::connect(save, &QPushButton::clicked, this, [this, service, key, saved] {
            std::string value = key->text().toStdString();
            key->clear();
            wizard_.saveSpeechKey(
                service->currentData().toString().toStdString(), std::move(value),
                [saved](bool kept) {
                    saved->setText(kept ? QStringLiteral("Saved in the keyring.")
                                        : QStringLiteral("The keyring did not take the key."));
                });
        });
    }
    refreshMicrophone();
    return box;
}

void WizardView::refreshMicrophone() {
    if (!micStatus_) {
        return;
    }
    micStatus_->setText(qs(wizard_.micStatus()));
    micStatus_->setAccessibleName(micStatus_->text());
    micDetail_->setText(qs(wizard_.micDetail()));
    allow_->setVisible(!wizard_.micGranted);
}

WizardWindow::WizardWindow(OnboardingWizard& wizard, std::function<void()> onClose)
    : onClose_(std::move(onClose)) {
    setWindowTitle(QString(OnboardingWizardController::windowTitle));
    setAccessibleName(windowTitle());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new WizardView(wizard));
    resize(620, 560);
}

void WizardWindow::present() {
    show();
    raise();
    activateWindow();
}

void WizardWindow::dismiss() {
    QWidget::close();
}

void WizardWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (!closed_) {
        closed_ = true;
        onClose_();
    }
}

MicrophoneWindow::MicrophoneWindow(OnboardingController& controller, std::function<void()> onClose)
    : controller_(controller), onClose_(std::move(onClose)) {
    setWindowTitle(QString(OnboardingController::windowTitle));
    setAccessibleName(windowTitle());
    setFixedWidth(480);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 22, 28, 22);
    layout->addWidget(heading(controller.heading()));
    layout->addWidget(label(OnboardingController::text));
    auto* row = new QHBoxLayout;
    row->addWidget(label(OnboardingController::microphoneLabel));
    mark_ = label("\u2717");
    row->addWidget(mark_);
    row->addStretch(1);
    QPushButton* allow = button(OnboardingController::allowLabel);
    QObject::connect(allow, &QPushButton::clicked, this, [this] { controller_.refresh(); });
    row->addWidget(allow);
    layout->addLayout(row);
    problem_ = note("");
    layout->addWidget(problem_);
    layout->addWidget(note(OnboardingController::recommendation));
}

void MicrophoneWindow::present() {
    show();
    raise();
    activateWindow();
}

void MicrophoneWindow::dismiss() {
    QWidget::close();
}

void MicrophoneWindow::setMicrophoneWorks(bool works) {
    mark_->setText(works ? QStringLiteral("\u2713") : QStringLiteral("\u2717"));
    mark_->setStyleSheet(works ? QStringLiteral("color: #2e9d52; font-weight: bold")
                               : QStringLiteral("color: #d08a1c; font-weight: bold"));
    mark_->setAccessibleName(works ? QStringLiteral("Microphone works")
                                   : QStringLiteral("Microphone does not work"));
    problem_->setText(qs(controller_.problem()));
}

void MicrophoneWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (!closed_) {
        closed_ = true;
        onClose_();
    }
}

void showProfileEditor(QWidget* parent, UIState& state) {
    auto* dialog = new QDialog(parent);
    dialog->setWindowTitle(QStringLiteral("Edit your profile"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    auto wizard = std::make_shared<OnboardingWizard>(state, false, [dialog] {
        QMetaObject::invokeMethod(dialog, &QDialog::accept, Qt::QueuedConnection);
    });
    auto* layout = new QVBoxLayout(dialog);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new WizardView(*wizard, wizard));
    dialog->resize(600, 540);
    dialog->open();
}

}  // namespace tevra
