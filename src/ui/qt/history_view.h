#pragma once

#include "ui/qt/page_kit.h"
#include "ui/ui_state.h"

namespace tevra {

// The History page: the greeting, three tiles and the newest dictations.
class HistoryView : public PageKit::Page {
public:
    explicit HistoryView(UIState& state);
    void refresh();

private:
    QWidget* row(const HistoryRow& row);

    UIState& state_;
    QLabel* greeting_;
    QHBoxLayout* tiles_;
    QVBoxLayout* rows_;
};

}  // namespace tevra
