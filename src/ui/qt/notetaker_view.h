#pragma once

#include <QTimer>
#include <optional>

#include "store/session_records.h"
#include "ui/qt/page_kit.h"
#include "ui/ui_state.h"

namespace tevra {

// The bar above the window's content while the notetaker is not idle.
class RecordingBar : public QFrame {
public:
    explicit RecordingBar(UIState& state);
    void refresh();

private:
    UIState& state_;
    QLabel* text_;
    QLabel* elapsed_;
    QPushButton* stop_;
    QTimer tick_;
};

// The Notetaker page: start, auto-detect, the sessions, and one session's detail.
class NotetakerView : public PageKit::Page {
public:
    explicit NotetakerView(UIState& state);
    // Reads the sessions again (or the open one).
    void refresh();
    // The notetaker's state changed: the controls follow, and a new session appears.
    void notetakerChanged();
    void open(int64_t id);

private:
    void showList();
    void showDetail(const NoteSession& session);
    QWidget* sessionCard(const NoteSession& session);
    QWidget* itemRow(const CaptureItem& item);

    UIState& state_;
    QPushButton* start_;
    QCheckBox* autoDetect_;
    QWidget* controls_;
    QVBoxLayout* body_;
    std::optional<int64_t> selected_;
    std::optional<int64_t> latestSeen_;
};

}  // namespace tevra
