#include "ui/qt/notetaker_view.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>

#include "notetaker/notetaker_controller.h"
#include "notetaker/notetaker_format.h"
#include "store/history_store.h"
#include "ui/settings_page.h"

namespace tevra {

using namespace PageKit;
using Kind = NotetakerState::Kind;

RecordingBar::RecordingBar(UIState& state) : state_(state) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Highlight);
    setForegroundRole(QPalette::HighlightedText);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(16, 6, 10, 6);
    text_ = label("");
    text_->setForegroundRole(QPalette::HighlightedText);
    elapsed_ = label("");
    elapsed_->setForegroundRole(QPalette::HighlightedText);
    stop_ = button("Stop");
    stop_->setToolTip(QStringLiteral("Stop recording and make notes"));
    layout->addWidget(text_, 1);
    layout->addWidget(elapsed_);
    layout->addWidget(stop_);
    QObject::connect(stop_, &QPushButton::clicked, this, [this] {
        if (state_.notetaker) {
            state_.notetaker->stop();
        }
    });
    tick_.setInterval(1000);
    QObject::connect(&tick_, &QTimer::timeout, this, [this] { refresh(); });
    refresh();
}

void RecordingBar::refresh() {
    const NotetakerState notes = state_.notetaker ? state_.notetaker->state() : NotetakerState{};
    setVisible(!notes.is(Kind::idle));
    stop_->setVisible(notes.is(Kind::recording));
    elapsed_->setVisible(notes.is(Kind::recording));
    switch (notes.kind) {
        case Kind::detected:
            text_->setText("Call detected \u2014 taking notes \u00b7 " + qs(notes.app));
            break;
        case Kind::recording:
            text_->setText("Recording \u00b7 " + qs(notes.app));
            elapsed_->setText(qs(NotetakerFormat::elapsed(notes.since, state_.now())));
            break;
        case Kind::processing:
            text_->setText(QStringLiteral("Making notes\u2026"));
            break;
        case Kind::idle:
            break;
    }
    text_->setAccessibleName(text_->text());
    if (notes.is(Kind::recording) != tick_.isActive()) {
        notes.is(Kind::recording) ? tick_.start() : tick_.stop();
    }
}

NotetakerView::NotetakerView(UIState& state)
    : Page("Notetaker", "Auto-captures your calls and turns them into notes."), state_(state) {
    controls_ = new QWidget;
    auto* row = new QHBoxLayout(controls_);
    row->setContentsMargins(0, 0, 0, 0);
    start_ = button("Start notes");
    autoDetect_ = toggle(SettingsPage::autoDetectLabel);
    autoDetect_->setToolTip(
        QStringLiteral("Automatically record and take notes when a call is detected"));
    row->addWidget(start_);
    row->addSpacing(16);
    row->addWidget(autoDetect_);
    row->addWidget(note("Tevra starts a session the moment a call begins."), 1);
    content()->addWidget(controls_);
    body_ = new QVBoxLayout;
    content()->addLayout(body_);
    QObject::connect(start_, &QPushButton::clicked, this, [this] {
        if (state_.notetaker) {
            state_.notetaker->startManual("Manual");
        }
    });
    QObject::connect(autoDetect_, &QCheckBox::toggled, this,
                     [this](bool on) { SettingsPage::setAutoDetect(state_, on); });
    notetakerChanged();
    refresh();
}

void NotetakerView::notetakerChanged() {
    const bool idle = !state_.notetaker || state_.notetaker->state().is(Kind::idle);
    start_->setEnabled(state_.notetaker && idle);
    start_->setToolTip(idle ? QStringLiteral("Start taking notes now")
                            : QStringLiteral("A session is already in progress"));
    const QSignalBlocker quiet(autoDetect_);
    autoDetect_->setChecked(state_.settings.notetakerAutoDetect);
    const auto latest = state_.notetaker ? state_.notetaker->latestSessionID() : std::nullopt;
    if (latest != latestSeen_) {
        latestSeen_ = latest;
        refresh();
    }
}

void NotetakerView::refresh() {
    if (selected_) {
        const HistoryStore* store = state_.store();
        const auto session = store ? store->session(*selected_) : std::nullopt;
        if (session) {
            showDetail(*session);
            return;
        }
        selected_.reset();
    }
    showList();
}

void NotetakerView::open(int64_t id) {
    selected_ = id;
    refresh();
}

void NotetakerView::showList() {
    clear(body_);
    controls_->setVisible(true);
    const HistoryStore* store = state_.store();
    const auto sessions = store ? store->recentSessions(50) : std::vector<NoteSession>{};
    if (sessions.empty()) {
        body_->addWidget(emptyState("Nothing captured yet.",
                                    "Tevra starts taking notes the moment you're on a call."));
    }
    for (const NoteSession& session : sessions) {
        body_->addWidget(sessionCard(session));
    }
}

QWidget* NotetakerView::sessionCard(const NoteSession& session) {
    const std::string title = NotetakerFormat::displayTitle(session);
    auto* open = new QPushButton;
    open->setAccessibleName(qs(title));
    open->setFlat(false);
    auto* layout = new QVBoxLayout(open);
    layout->addWidget(heading(title));
    layout->addWidget(note(NotetakerFormat::relative(session.startedAt, state_.now()) + " \u00b7 " +
                           NotetakerFormat::duration(session.startedAt, session.endedAt) +
                           " \u00b7 " + NotetakerFormat::summary(session.items)));
    for (QLabel* child : open->findChildren<QLabel*>()) {
        child->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
    open->setMinimumHeight(layout->sizeHint().height());
    QObject::connect(open, &QPushButton::clicked, this,
                     [this, id = session.id] { this->open(id); });
    return open;
}

void NotetakerView::showDetail(const NoteSession& session) {
    clear(body_);
    controls_->setVisible(false);
    auto* top = new QHBoxLayout;
    QPushButton* back = button("All notes");
    QObject::connect(back, &QPushButton::clicked, this, [this] {
        selected_.reset();
        refresh();
    });
    top->addWidget(back);
    top->addStretch(1);
    QPushButton* copy = button("Copy transcript");
    const QString transcript = qs(NotetakerFormat::transcriptText(session));
    QObject::connect(copy, &QPushButton::clicked, copy, [copy, transcript] {
        QGuiApplication::clipboard()->setText(transcript);
        flash(copy, QStringLiteral("Copied"));
    });
    QPushButton* remove = button("Delete", "Delete this session");
    remove->setToolTip(QStringLiteral("Delete this session"));
    QObject::connect(remove, &QPushButton::clicked, this, [this, id = session.id] {
        if (HistoryStore* store = state_.store()) {
            store->deleteSession(id);
        }
        selected_.reset();
        refresh();
    });
    top->addWidget(copy);
    top->addWidget(remove);
    body_->addLayout(top);
    body_->addWidget(heading(NotetakerFormat::displayTitle(session)));
    body_->addWidget(note(NotetakerFormat::detailSubtitle(session)));

    if (session.items.empty()) {
        body_->addWidget(note("No tasks or notes were extracted from this session."));
    }
    const std::pair<CaptureKind, const char*> groups[] = {
        {CaptureKind::task, "Tasks"}, {CaptureKind::event, "Events"}, {CaptureKind::note, "Notes"}};
    for (const auto& [kind, name] : groups) {
        QFrame* box = nullptr;
        for (const CaptureItem& item : session.items) {
            if (item.kind != kind) {
                continue;
            }
            if (!box) {
                body_->addWidget(heading(name));
                box = card();
                box->setAccessibleName(qs(name));
                new QVBoxLayout(box);
                body_->addWidget(box);
            }
            box->layout()->addWidget(itemRow(item));
        }
    }

    body_->addWidget(heading("Transcript"));
    QFrame* lines = card();
    lines->setAccessibleName(QStringLiteral("Transcript"));
    auto* linesLayout = new QVBoxLayout(lines);
    if (session.transcript.empty()) {
        linesLayout->addWidget(note("No transcript was captured."));
    }
    for (const TranscriptLine& line : session.transcript) {
        auto* row = new QHBoxLayout;
        QLabel* speaker = label(NotetakerFormat::speakerLabel(line.speaker));
        speaker->setStyleSheet(line.speaker == Speaker::me     ? "color: #3b82c4; font-weight: bold"
                               : line.speaker == Speaker::them ? "color: #b8702a; font-weight: bold"
                                                               : "");
        speaker->setFixedWidth(48);
        row->addWidget(speaker);
        QLabel* clock = note(NotetakerFormat::clock(line.ts, session.startedAt));
        clock->setFixedWidth(48);
        row->addWidget(clock);
        row->addWidget(label(line.text), 1);
        linesLayout->addLayout(row);
    }
    body_->addWidget(lines);
}

QWidget* NotetakerView::itemRow(const CaptureItem& item) {
    auto* row = new QWidget;
    row->setAccessibleName(qs(item.title));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(4, 2, 4, 2);
    const char* mark = item.kind == CaptureKind::task    ? "\u25a1"
                       : item.kind == CaptureKind::event ? "\u25a6"
                                                         : "\u2022";
    QLabel* markLabel = label(mark);
    markLabel->setAlignment(Qt::AlignTop);
    layout->addWidget(markLabel);
    auto* text = new QVBoxLayout;
    text->addWidget(label(item.title));
    if (item.kind == CaptureKind::event) {
        if (const auto when = NotetakerFormat::eventWhen(item)) {
            text->addWidget(note(*when));
        }
    }
    if (item.detail && !item.detail->empty()) {
        text->addWidget(note(*item.detail));
    }
    if (!item.evidence.empty()) {
        QLabel* evidence = note("\u201c" + item.evidence + "\u201d");
        QFont font = evidence->font();
        font.setItalic(true);
        evidence->setFont(font);
        evidence->setMaximumHeight(evidence->fontMetrics().lineSpacing() * 2 + 2);
        text->addWidget(evidence);
    }
    layout->addLayout(text, 1);
    if (item.owner == Speaker::them) {
        layout->addWidget(badge("waiting on them",
                                "The other party committed to this \u2014 you're waiting on them"));
    }
    return row;
}

}  // namespace tevra
