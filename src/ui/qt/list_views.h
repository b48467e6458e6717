#pragma once

#include "ui/list_pages.h"
#include "ui/qt/page_kit.h"

namespace tevra {

// The four list pages: inputs and an add button on top, one row per entry
// below, each with its "Remove". Their inputs live as long as the page.
class DictionaryView : public PageKit::Page {
public:
    explicit DictionaryView(UIState& state);
    void refresh();

private:
    UIState& state_;
    DictionaryPage page_;
    QLineEdit* input_;
    QVBoxLayout* rows_;
};

class ReplacementsView : public PageKit::Page {
public:
    explicit ReplacementsView(UIState& state);
    void refresh();

private:
    UIState& state_;
    ReplacementsPage page_;
    QLineEdit* from_;
    QLineEdit* to_;
    QCheckBox* regex_;
    QVBoxLayout* rows_;
};

class SnippetsView : public PageKit::Page {
public:
    explicit SnippetsView(UIState& state);
    void refresh();

private:
    UIState& state_;
    SnippetsPage page_;
    QLineEdit* trigger_;
    QLineEdit* expansion_;
    QPushButton* add_;
    QVBoxLayout* rows_;
};

class TonesView : public PageKit::Page {
public:
    explicit TonesView(UIState& state);
    void refresh();

private:
    UIState& state_;
    TonesPage page_;
    QComboBox* kind_;
    QLineEdit* pattern_;
    QComboBox* tone_;
    QPushButton* add_;
    QVBoxLayout* rows_;
};

// A row of a list page: its words, perhaps a badge, and "Remove".
QWidget* listRow(const std::string& text, QLabel* badge, std::function<void()> remove);

}  // namespace tevra
