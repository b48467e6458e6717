#include "ui/qt/list_views.h"

#include <QHBoxLayout>

namespace tevra {

using namespace PageKit;

QWidget* listRow(const std::string& text, QLabel* mark, std::function<void()> remove) {
    QFrame* box = card();
    box->setAccessibleName(qs(text));
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(12, 6, 8, 6);
    layout->addWidget(label(text), 1);
    if (mark) {
        layout->addWidget(mark);
    }
    QPushButton* removeButton = button(removeLabel, std::string(removeLabel) + " " + text);
    QObject::connect(removeButton, &QPushButton::clicked, removeButton,
                     [remove = std::move(remove)] { remove(); });
    layout->addWidget(removeButton);
    return box;
}

namespace {

// The input row: fields, then the add button at its end.
QHBoxLayout* inputRow(QVBoxLayout* content) {
    auto* row = new QHBoxLayout;
    content->addLayout(row);
    return row;
}

}  // namespace

DictionaryView::DictionaryView(UIState& state)
    : Page(DictionaryPage::title, DictionaryPage::subtitle), state_(state) {
    QHBoxLayout* inputs = inputRow(content());
    input_ = field(DictionaryPage::placeholder, "Phrase");
    QPushButton* add = button(DictionaryPage::addLabel, "Add phrase");
    inputs->addWidget(input_, 1);
    inputs->addWidget(add);
    const auto adding = [this] {
        page_.input = input_->text().toStdString();
        if (page_.add(state_)) {
            input_->clear();
        }
    };
    QObject::connect(add, &QPushButton::clicked, this, adding);
    QObject::connect(input_, &QLineEdit::returnPressed, this, adding);
    rows_ = new QVBoxLayout;
    content()->addLayout(rows_);
    refresh();
}

void DictionaryView::refresh() {
    clear(rows_);
    for (const std::string& phrase : state_.dictionary) {
        rows_->addWidget(
            listRow(phrase, nullptr, [this, phrase] { page_.remove(state_, phrase); }));
    }
}

ReplacementsView::ReplacementsView(UIState& state)
    : Page(ReplacementsPage::title, ReplacementsPage::subtitle), state_(state) {
    QHBoxLayout* inputs = inputRow(content());
    from_ = field(ReplacementsPage::fromPlaceholder, "Heard text");
    to_ = field(ReplacementsPage::toPlaceholder, "Typed text");
    regex_ = toggle(ReplacementsPage::regexLabel);
    QPushButton* add = button(ReplacementsPage::addLabel, "Add replacement");
    inputs->addWidget(from_, 1);
    inputs->addWidget(new QLabel(QStringLiteral("\u2192")));
    inputs->addWidget(to_, 1);
    inputs->addWidget(regex_);
    inputs->addWidget(add);
    const auto adding = [this] {
        page_.from = from_->text().toStdString();
        page_.to = to_->text().toStdString();
        page_.isRegex = regex_->isChecked();
        if (page_.add(state_)) {
            from_->clear();
            to_->clear();
            regex_->setChecked(false);
        }
    };
    QObject::connect(add, &QPushButton::clicked, this, adding);
    QObject::connect(to_, &QLineEdit::returnPressed, this, adding);
    rows_ = new QVBoxLayout;
    content()->addLayout(rows_);
    refresh();
}

void ReplacementsView::refresh() {
    clear(rows_);
    for (const Replacement& replacement : state_.replacements) {
        const std::string text = replacement.from + "  \u2192  " + replacement.to;
        QLabel* mark = replacement.isRegex ? badge(ReplacementsPage::regexLabel) : nullptr;
        rows_->addWidget(
            listRow(text, mark, [this, replacement] { page_.remove(state_, replacement); }));
    }
}

SnippetsView::SnippetsView(UIState& state)
    : Page(SnippetsPage::title, SnippetsPage::subtitle), state_(state) {
    QHBoxLayout* inputs = inputRow(content());
    trigger_ = field(SnippetsPage::triggerPlaceholder, "Trigger");
    expansion_ = field(SnippetsPage::expansionPlaceholder, "Expansion");
    add_ = button(SnippetsPage::addLabel);
    add_->setEnabled(false);
    inputs->addWidget(trigger_, 1);
    inputs->addWidget(expansion_, 2);
    inputs->addWidget(add_);
    const auto edited = [this] {
        page_.trigger = trigger_->text().toStdString();
        page_.expansion = expansion_->text().toStdString();
        add_->setEnabled(page_.canAdd());
    };
    QObject::connect(trigger_, &QLineEdit::textChanged, this, edited);
    QObject::connect(expansion_, &QLineEdit::textChanged, this, edited);
    const auto adding = [this] {
        if (page_.add(state_)) {
            trigger_->clear();
            expansion_->clear();
        }
    };
    QObject::connect(add_, &QPushButton::clicked, this, adding);
    QObject::connect(expansion_, &QLineEdit::returnPressed, this, adding);
    rows_ = new QVBoxLayout;
    content()->addLayout(rows_);
    refresh();
}

void SnippetsView::refresh() {
    clear(rows_);
    if (state_.snippets.empty()) {
        rows_->addWidget(emptyState(SnippetsPage::emptyTitle, SnippetsPage::emptyHint));
    }
    for (const SnippetItem& snippet : state_.snippets) {
        rows_->addWidget(listRow(snippet.trigger + "  \u2192  " + snippet.expansion, nullptr,
                                 [this, snippet] { page_.remove(state_, snippet); }));
    }
}

TonesView::TonesView(UIState& state) : Page(TonesPage::title, TonesPage::subtitle), state_(state) {
    QHBoxLayout* inputs = inputRow(content());
    kind_ = choice("Match on");
    for (const auto& kind : TonesPage::kinds) {
        kind_->addItem(qs(kind.label), qs(kind.value));
    }
    pattern_ = field(TonesPage::placeholder(page_.kind), "Pattern");
    tone_ = choice("Tone");
    for (const char* tone : TonesPage::toneChoices) {
        tone_->addItem(qs(tone), qs(tone));
    }
    add_ = button(TonesPage::addLabel);
    add_->setEnabled(false);
    inputs->addWidget(kind_);
    inputs->addWidget(pattern_, 1);
    inputs->addWidget(tone_);
    inputs->addWidget(add_);
    content()->addWidget(note(TonesPage::kindNote));
    QObject::connect(kind_, &QComboBox::currentIndexChanged, this, [this] {
        page_.kind = kind_->currentData().toString().toStdString();
        pattern_->setPlaceholderText(qs(TonesPage::placeholder(page_.kind)));
    });
    QObject::connect(tone_, &QComboBox::currentIndexChanged, this,
                     [this] { page_.tone = tone_->currentData().toString().toStdString(); });
    QObject::connect(pattern_, &QLineEdit::textChanged, this, [this] {
        page_.pattern = pattern_->text().toStdString();
        add_->setEnabled(page_.canAdd());
    });
    const auto adding = [this] {
        if (page_.add(state_)) {
            pattern_->clear();
        }
    };
    QObject::connect(add_, &QPushButton::clicked, this, adding);
    QObject::connect(pattern_, &QLineEdit::returnPressed, this, adding);
    rows_ = new QVBoxLayout;
    content()->addLayout(rows_);
    refresh();
}

void TonesView::refresh() {
    clear(rows_);
    if (state_.tones.empty()) {
        rows_->addWidget(emptyState(TonesPage::emptyTitle, TonesPage::emptyHint));
    }
    for (const ToneItem& tone : state_.tones) {
        rows_->addWidget(
            listRow(tone.pattern + "  \u2192  " + tone.tone,
                    badge(TonesPage::badge(tone.matchKind), TonesPage::badgeHelp(tone.matchKind)),
                    [this, tone] { page_.remove(state_, tone); }));
    }
}

}  // namespace tevra
