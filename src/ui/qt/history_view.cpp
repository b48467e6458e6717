#include "ui/qt/history_view.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>

#include "core/weft_runtime.h"
#include "ui/history_page.h"

namespace tevra {

using namespace PageKit;

HistoryView::HistoryView(UIState& state) : Page("History", HistoryPage::subtitle), state_(state) {
    greeting_ = heading("");
    content()->addWidget(greeting_);
    tiles_ = new QHBoxLayout;
    content()->addLayout(tiles_);
    rows_ = new QVBoxLayout;
    rows_->setSpacing(8);
    content()->addLayout(rows_);
    refresh();
}

void HistoryView::refresh() {
    const QString greeting = qs(HistoryPage::greeting(state_));
    greeting_->setText(greeting);
    greeting_->setAccessibleName(greeting);
    clear(tiles_);
    for (const auto& figure : HistoryPage::tiles(state_)) {
        tiles_->addWidget(tile(figure.value, figure.label));
    }
    clear(rows_);
    if (state_.history.empty()) {
        rows_->addWidget(
            emptyState(HistoryPage::emptyTitle, HistoryPage::emptyHint(state_.runtime.settings())));
    }
    for (const HistoryRow& entry : state_.history) {
        rows_->addWidget(row(entry));
    }
}

QWidget* HistoryView::row(const HistoryRow& entry) {
    QFrame* box = card();
    box->setAccessibleName(qs(entry.polished));
    auto* layout = new QVBoxLayout(box);
    auto* top = new QHBoxLayout;
    QLabel* text = label(entry.polished);
    top->addWidget(text, 1);
    if (HistoryPage::isCommand(entry)) {
        top->addWidget(badge(HistoryPage::commandBadge));
    }
    QPushButton* copy = button(HistoryPage::copyLabel, "Copy \u201c" + entry.polished + "\u201d");
    const QString polished = qs(entry.polished);
    QObject::connect(copy, &QPushButton::clicked, copy, [copy, polished] {
        QClipboard* clipboard = QGuiApplication::clipboard();
        clipboard->clear();
        clipboard->setText(polished);
        flash(copy, qs(HistoryPage::copiedLabel));
    });
    top->addWidget(copy);
    layout->addLayout(top);

    auto* foot = new QHBoxLayout;
    foot->addWidget(note(HistoryPage::when(entry)));
    foot->addStretch(1);
    foot->addWidget(note(HistoryPage::processing(entry)));
    auto* disclose = new QPushButton(qs(HistoryPage::showRaw));
    disclose->setFlat(true);
    disclose->setCheckable(true);
    disclose->setAccessibleName(qs(HistoryPage::showRaw));
    foot->addWidget(disclose);
    layout->addLayout(foot);
    QLabel* raw = note(entry.raw);
    raw->setVisible(false);
    layout->addWidget(raw);
    QObject::connect(disclose, &QPushButton::toggled, raw, [raw, disclose](bool open) {
        raw->setVisible(open);
        const QString words = qs(open ? HistoryPage::hideRaw : HistoryPage::showRaw);
        disclose->setText(words);
        disclose->setAccessibleName(words);
    });
    return box;
}

}  // namespace tevra
