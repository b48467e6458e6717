#pragma once

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <functional>
#include <string>
#include <string_view>

// The pieces every page of the main window is made of. Each control gets an
// accessible name, so that screen readers and AT-SPI find it by what it says.
namespace tevra::PageKit {

inline QString qs(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// A page that scrolls: its title and subtitle on top, then content().
class Page : public QScrollArea {
public:
    Page(std::string_view title, std::string_view subtitle);
    QVBoxLayout* content() const { return content_; }

private:
    QVBoxLayout* content_;
};

QLabel* label(std::string_view text, QWidget* parent = nullptr);
// Smaller, dimmer words under a control.
QLabel* note(std::string_view text);
QLabel* heading(std::string_view text);
// A rounded box that groups controls.
QFrame* card(QWidget* parent = nullptr);
QPushButton* button(std::string_view text, std::string_view accessibleName = {});
QLineEdit* field(std::string_view placeholder, std::string_view accessibleName);
QCheckBox* toggle(std::string_view text);
QComboBox* choice(std::string_view accessibleName);
// A small rounded mark beside a row's text: "regex", "command", "screenshot".
QLabel* badge(std::string_view text, std::string_view help = {});
// A figure in a box: the value large, its label, and a caption if any.
QFrame* tile(const std::string& value, const std::string& label, const std::string& caption = {});
// A button alone at the start of its row, which runs action.
QHBoxLayout* buttonRow(std::string_view text, std::function<void()> action);
// The two lines of an empty list.
QWidget* emptyState(std::string_view title, std::string_view hint);
// Removes every item of a layout, deleting its widgets.
void clear(QLayout* layout);
// A button's text for a moment, then back: "Copied".
void flash(QPushButton* button, const QString& text);

}  // namespace tevra::PageKit
