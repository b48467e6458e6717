#pragma once

#include "ui/insights_page.h"
#include "ui/qt/page_kit.h"
#include "ui/ui_state.h"

namespace tevra {

// The Insights page: the figures as tiles, the heat map of 120 days with a
// sparkline and the streaks, and a bar per application.
class InsightsView : public PageKit::Page {
public:
    explicit InsightsView(UIState& state);
    void refresh();
    const InsightsPage& figures() const { return page_; }

private:
    UIState& state_;
    InsightsPage page_;
    QVBoxLayout* body_;
};

// The 120-day grid and the sparkline, drawn.
class ActivityChart : public QWidget {
public:
    explicit ActivityChart(const InsightsPage& page);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    std::vector<InsightsPage::Column> columns_;
    std::vector<int64_t> sparkline_;
    int64_t maxCount_;
};

// One bar per application, longest for the most words.
class AppBars : public QWidget {
public:
    explicit AppBars(std::vector<AppUsage> apps);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent*) override;

private:
    std::vector<AppUsage> apps_;
};

}  // namespace tevra
