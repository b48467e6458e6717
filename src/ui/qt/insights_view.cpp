#include "ui/qt/insights_view.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>

#include "store/insights_format.h"

namespace tevra {

using namespace PageKit;

namespace {

constexpr int kCell = 11;
constexpr int kGap = 3;
constexpr int kSparkHeight = 46;

QColor withAlpha(QColor colour, double opacity) {
    colour.setAlphaF(static_cast<float>(opacity));
    return colour;
}

}  // namespace

InsightsView::InsightsView(UIState& state)
    : Page(InsightsPage::title, InsightsPage::subtitle), state_(state) {
    body_ = new QVBoxLayout;
    content()->addLayout(body_);
    refresh();
}

void InsightsView::refresh() {
    page_ = InsightsPage::read(state_.store());
    clear(body_);
    if (page_.isEmpty()) {
        body_->addWidget(emptyState(InsightsPage::emptyTitle, InsightsPage::emptyHint));
        return;
    }
    auto* tiles = new QGridLayout;
    int index = 0;
    for (const auto& figure : page_.figures()) {
        tiles->addWidget(tile(figure.value, figure.label, figure.caption), index / 3, index % 3);
        ++index;
    }
    body_->addLayout(tiles);

    QFrame* activity = card();
    activity->setAccessibleName(QStringLiteral("Activity"));
    auto* activityLayout = new QVBoxLayout(activity);
    auto* chart = new ActivityChart(page_);
    chart->setAccessibleName(qs(page_.sparklineCaption()));
    activityLayout->addWidget(chart);
    auto* streaks = new QHBoxLayout;
    streaks->addWidget(note(page_.sparklineCaption()));
    streaks->addStretch(1);
    for (const auto& [name, days] : {std::pair{"current", page_.streaks.current},
                                     std::pair{"longest", page_.streaks.longest}}) {
        streaks->addWidget(badge(std::string(name) + " " + InsightsPage::dayCount(days)));
    }
    activityLayout->addLayout(streaks);
    body_->addWidget(activity);

    body_->addWidget(heading(InsightsPage::appsHeading));
    if (page_.apps.empty()) {
        body_->addWidget(note(InsightsPage::noApps));
    } else {
        auto* bars = new AppBars(page_.apps);
        std::string described;
        for (const AppUsage& app : page_.apps) {
            described += app.app + ": " + InsightsFormat::grouped(app.words) + " words; ";
        }
        bars->setAccessibleName(qs(InsightsPage::appsHeading));
        bars->setAccessibleDescription(qs(described));
        body_->addWidget(bars);
    }
}

ActivityChart::ActivityChart(const InsightsPage& page)
    : columns_(page.weekColumns()), sparkline_(page.sparkline()), maxCount_(page.maxCount()) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ActivityChart::sizeHint() const {
    const int gridWidth = static_cast<int>(columns_.size()) * (kCell + kGap);
    return {gridWidth + 240, 7 * (kCell + kGap)};
}

void ActivityChart::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QColor ink = palette().color(QPalette::WindowText);
    const QColor accent = palette().color(QPalette::Highlight);
    for (std::size_t x = 0; x < columns_.size(); ++x) {
        for (std::size_t y = 0; y < columns_[x].size(); ++y) {
            const auto& cell = columns_[x][y];
            if (!cell) {
                continue;  // padding before the oldest day
            }
            const auto shade = InsightsPage::shade(cell->count, maxCount_);
            painter.setBrush(withAlpha(shade.accent ? accent : ink, shade.opacity));
            painter.drawRoundedRect(QRectF(static_cast<double>(x) * (kCell + kGap),
                                           static_cast<double>(y) * (kCell + kGap), kCell, kCell),
                                    2.5, 2.5);
        }
    }
    // The sparkline to the right of the grid.
    if (sparkline_.size() < 2) {
        return;
    }
    const double left = static_cast<double>(columns_.size()) * (kCell + kGap) + 24;
    const double width = std::max(60.0, this->width() - left - 4);
    const double top = (height() - kSparkHeight) / 2.0;
    const int64_t most = std::max<int64_t>(1, *std::ranges::max_element(sparkline_));
    QPainterPath path;
    for (std::size_t i = 0; i < sparkline_.size(); ++i) {
        const QPointF point(
            left + width * static_cast<double>(i) / static_cast<double>(sparkline_.size() - 1),
            top + kSparkHeight *
                      (1.0 - static_cast<double>(sparkline_[i]) / static_cast<double>(most)));
        i == 0 ? path.moveTo(point) : path.lineTo(point);
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(accent, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(path);
}

AppBars::AppBars(std::vector<AppUsage> apps) : apps_(std::move(apps)) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize AppBars::sizeHint() const {
    return {400, static_cast<int>(apps_.size()) * (fontMetrics().height() + 14)};
}

void AppBars::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int line = fontMetrics().height() + 14;
    const int nameWidth = std::min(180, width() / 3);
    const int figureWidth = 170;
    const double barSpace = std::max(40, width() - nameWidth - figureWidth - 16);
    int64_t most = 1;
    for (const AppUsage& app : apps_) {
        most = std::max(most, app.words);
    }
    const QColor ink = palette().color(QPalette::WindowText);
    const QColor accent = palette().color(QPalette::Highlight);
    for (std::size_t i = 0; i < apps_.size(); ++i) {
        const AppUsage& app = apps_[i];
        const int y = static_cast<int>(i) * line;
        painter.setPen(ink);
        painter.drawText(QRect(0, y, nameWidth - 8, line), Qt::AlignVCenter | Qt::AlignLeft,
                         fontMetrics().elidedText(qs(app.app.empty() ? "unknown" : app.app),
                                                  Qt::ElideRight, nameWidth - 8));
        painter.setPen(Qt::NoPen);
        painter.setBrush(withAlpha(ink, 0.06));
        painter.drawRoundedRect(QRectF(nameWidth, y + line / 2.0 - 5, barSpace, 10), 5, 5);
        painter.setBrush(accent);
        const double length =
            std::max(10.0, barSpace * static_cast<double>(app.words) / static_cast<double>(most));
        painter.drawRoundedRect(QRectF(nameWidth, y + line / 2.0 - 5, length, 10), 5, 5);
        painter.setPen(ink);
        painter.drawText(QRect(nameWidth + static_cast<int>(barSpace) + 12, y, figureWidth, line),
                         Qt::AlignVCenter | Qt::AlignLeft,
                         qs(InsightsFormat::grouped(app.words) + " words \u00b7 " +
                            std::to_string(app.dictations) + " dict."));
    }
}

}  // namespace tevra
