#include "ui/qt/main_window.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

#include "notetaker/notetaker_controller.h"
#include "ui/qt/history_view.h"
#include "ui/qt/insights_view.h"
#include "ui/qt/list_views.h"
#include "ui/qt/modes_view.h"
#include "ui/qt/notetaker_view.h"
#include "ui/qt/settings_view.h"

namespace tevra {

using namespace PageKit;

namespace {

QStyle::StandardPixmap iconOf(TevraSection section) {
    switch (section) {
        case TevraSection::history:
            return QStyle::SP_FileDialogDetailedView;
        case TevraSection::notetaker:
            return QStyle::SP_FileDialogContentsView;
        case TevraSection::insights:
            return QStyle::SP_FileDialogInfoView;
        case TevraSection::modes:
            return QStyle::SP_MediaVolume;
        case TevraSection::dictionary:
            return QStyle::SP_FileIcon;
        case TevraSection::replacements:
            return QStyle::SP_BrowserReload;
        case TevraSection::snippets:
            return QStyle::SP_FileDialogNewFolder;
        case TevraSection::tones:
            return QStyle::SP_DesktopIcon;
        case TevraSection::settings:
            return QStyle::SP_ComputerIcon;
    }
    return QStyle::SP_FileIcon;
}

}  // namespace

MainWindow::MainWindow(UIState& state, std::function<void()> editProfile) : state_(state) {
    setWindowTitle(QStringLiteral("Tevra"));
    setAccessibleName(QStringLiteral("Tevra"));
    resize(960, 680);
    auto* outer = new QHBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    auto* side = new QWidget;
    side->setAutoFillBackground(true);
    side->setBackgroundRole(QPalette::AlternateBase);
    side->setFixedWidth(200);
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(12, 18, 12, 12);
    QLabel* name = heading(TevraSections::productName);
    QFont font = name->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    name->setFont(font);
    sideLayout->addWidget(name);
    sideLayout->addWidget(note(TevraSections::tagline));
    sideLayout->addSpacing(12);
    sidebar_ = new QListWidget;
    sidebar_->setAccessibleName(QStringLiteral("Sections"));
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->setIconSize(QSize(16, 16));
    sidebar_->setSpacing(1);
    for (TevraSection section : TevraSections::all) {
        auto* item = new QListWidgetItem(style()->standardIcon(iconOf(section)),
                                         qs(TevraSections::title(section)));
        item->setData(Qt::AccessibleTextRole, qs(TevraSections::title(section)));
        sidebar_->addItem(item);
    }
    sideLayout->addWidget(sidebar_, 1);
    outer->addWidget(side);

    auto* right = new QVBoxLayout;
    right->setSpacing(0);
    bar_ = new RecordingBar(state_);
    right->addWidget(bar_);
    pages_ = new QStackedWidget;
    history_ = new HistoryView(state_);
    notetaker_ = new NotetakerView(state_);
    insights_ = new InsightsView(state_);
    modes_ = new ModesView(state_, editProfile);
    dictionary_ = new DictionaryView(state_);
    replacements_ = new ReplacementsView(state_);
    snippets_ = new SnippetsView(state_);
    tones_ = new TonesView(state_);
    settings_ = new SettingsView(state_, editProfile);
    for (QWidget* page :
         std::initializer_list<QWidget*>{history_, notetaker_, insights_, modes_, dictionary_,
                                         replacements_, snippets_, tones_, settings_}) {
        pages_->addWidget(page);
    }
    right->addWidget(pages_, 1);
    outer->addLayout(right, 1);

    QObject::connect(sidebar_, &QListWidget::currentRowChanged, this,
                     [this](int row) { sectionChanged(row); });
    // A screen reader selects an item without making it current.
    QObject::connect(sidebar_, &QListWidget::itemSelectionChanged, this, [this] {
        const auto selected = sidebar_->selectedItems();
        if (!selected.isEmpty() && selected.front() != sidebar_->currentItem()) {
            sidebar_->setCurrentItem(selected.front());
        }
    });
    sidebar_->setCurrentRow(static_cast<int>(TevraSections::first));
    token_ = state_.observe([this] { refresh(); });
    if (state_.notetaker) {
        // The notetaker keeps its observers for its life: this one checks the window is there.
        state_.notetaker->observe([this, alive = std::weak_ptr<bool>(alive_)] {
            if (alive.lock()) {
                bar_->refresh();
                notetaker_->notetakerChanged();
            }
        });
    }
}

MainWindow::~MainWindow() = default;

void MainWindow::refresh() {
    // Only the page in view is rebuilt now; the others when they come into view.
    stale_.fill(true);
    refreshSection(section());
}

void MainWindow::refreshSection(TevraSection shown) {
    const auto index = static_cast<std::size_t>(shown);
    if (!stale_[index]) {
        return;
    }
    stale_[index] = false;
    switch (shown) {
        case TevraSection::history:
            history_->refresh();
            break;
        case TevraSection::notetaker:
            notetaker_->refresh();
            break;
        case TevraSection::insights:
            insights_->refresh();
            break;
        case TevraSection::modes:
            modes_->refresh();
            break;
        case TevraSection::dictionary:
            dictionary_->refresh();
            break;
        case TevraSection::replacements:
            replacements_->refresh();
            break;
        case TevraSection::snippets:
            snippets_->refresh();
            break;
        case TevraSection::tones:
            tones_->refresh();
            break;
        case TevraSection::settings:
            settings_->refresh();
            break;
    }
}

void MainWindow::present() {
    state_.reload();
    if (isMinimized()) {
        showNormal();
    }
    show();
    raise();
    activateWindow();
}

void MainWindow::showSection(TevraSection section) {
    sidebar_->setCurrentRow(static_cast<int>(section));
}

TevraSection MainWindow::section() const {
    return TevraSections::all[static_cast<std::size_t>(std::max(0, current_))];
}

QWidget* MainWindow::page(TevraSection section) const {
    return pages_->widget(static_cast<int>(section));
}

void MainWindow::sectionChanged(int index) {
    if (index < 0) {
        return;
    }
    if (section() == TevraSection::settings && index != current_) {
        state_.saveSettings();
    }
    current_ = index;
    // The store's own views are read each time they come into view.
    if (section() == TevraSection::insights || section() == TevraSection::notetaker) {
        stale_[static_cast<std::size_t>(index)] = true;
    }
    refreshSection(section());
    pages_->setCurrentIndex(index);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (section() == TevraSection::settings) {
        state_.saveSettings();
    }
    event->accept();
}

}  // namespace tevra
