#include "ui/qt/page_kit.h"

#include <QPointer>
#include <QTimer>

namespace tevra::PageKit {

Page::Page(std::string_view title, std::string_view subtitle) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    // The pages wrap their words to the window's width.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* body = new QWidget;
    auto* outer = new QVBoxLayout(body);
    outer->setContentsMargins(28, 22, 28, 22);
    outer->setSpacing(14);
    auto* titleLabel = new QLabel(qs(title));
    QFont font = titleLabel->font();
    font.setPointSizeF(font.pointSizeF() * 1.7);
    font.setBold(true);
    titleLabel->setFont(font);
    titleLabel->setAccessibleName(qs(title));
    outer->addWidget(titleLabel);
    if (!subtitle.empty()) {
        outer->addWidget(note(subtitle));
    }
    content_ = new QVBoxLayout;
    content_->setSpacing(10);
    outer->addLayout(content_);
    outer->addStretch(1);
    setWidget(body);
    setAccessibleName(qs(title));
}

QLabel* label(std::string_view text, QWidget* parent) {
    auto* made = new QLabel(qs(text), parent);
    made->setWordWrap(true);
    made->setAccessibleName(qs(text));
    return made;
}

QLabel* note(std::string_view text) {
    QLabel* made = label(text);
    made->setForegroundRole(QPalette::PlaceholderText);
    QFont font = made->font();
    font.setPointSizeF(font.pointSizeF() * 0.92);
    made->setFont(font);
    return made;
}

QLabel* heading(std::string_view text) {
    QLabel* made = label(text);
    QFont font = made->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.15);
    made->setFont(font);
    return made;
}

QFrame* card(QWidget* parent) {
    auto* frame = new QFrame(parent);
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::Base);
    return frame;
}

QPushButton* button(std::string_view text, std::string_view accessibleName) {
    auto* made = new QPushButton(qs(text));
    made->setAccessibleName(qs(accessibleName.empty() ? text : accessibleName));
    return made;
}

QLineEdit* field(std::string_view placeholder, std::string_view accessibleName) {
    auto* made = new QLineEdit;
    made->setPlaceholderText(qs(placeholder));
    made->setAccessibleName(qs(accessibleName));
    made->setClearButtonEnabled(true);
    return made;
}

QCheckBox* toggle(std::string_view text) {
    auto* made = new QCheckBox(qs(text));
    made->setAccessibleName(qs(text));
    return made;
}

QComboBox* choice(std::string_view accessibleName) {
    auto* made = new QComboBox;
    made->setAccessibleName(qs(accessibleName));
    // Long choices are elided rather than widening the page.
    made->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    made->setMinimumContentsLength(10);
    return made;
}

QLabel* badge(std::string_view text, std::string_view help) {
    auto* made = new QLabel(qs(text));
    made->setAccessibleName(qs(text));
    made->setToolTip(qs(help));
    made->setStyleSheet(QStringLiteral(
        "QLabel { border: 1px solid palette(mid); border-radius: 7px; padding: 0 6px; }"));
    made->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    return made;
}

QFrame* tile(const std::string& value, const std::string& text, const std::string& caption) {
    QFrame* box = card();
    auto* layout = new QVBoxLayout(box);
    QLabel* figure = heading(value);
    QFont font = figure->font();
    font.setPointSizeF(font.pointSizeF() * 1.4);
    figure->setFont(font);
    layout->addWidget(figure);
    layout->addWidget(caption.empty() ? note(text) : label(text));
    if (!caption.empty()) {
        layout->addWidget(note(caption));
    }
    box->setAccessibleName(qs(value + " " + text));
    return box;
}

QHBoxLayout* buttonRow(std::string_view text, std::function<void()> action) {
    auto* row = new QHBoxLayout;
    QPushButton* made = button(text);
    QObject::connect(made, &QPushButton::clicked, made, [action = std::move(action)] {
        if (action) {
            action();
        }
    });
    row->addWidget(made);
    row->addStretch(1);
    return row;
}

QWidget* emptyState(std::string_view title, std::string_view hint) {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 24, 0, 24);
    QLabel* first = heading(title);
    first->setAlignment(Qt::AlignHCenter);
    QLabel* second = note(hint);
    second->setAlignment(Qt::AlignHCenter);
    layout->addWidget(first);
    layout->addWidget(second);
    return box;
}

void clear(QLayout* layout) {
    while (QLayoutItem* item = layout->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        } else if (QLayout* inner = item->layout()) {
            clear(inner);
        }
        delete item;
    }
}

void flash(QPushButton* button, const QString& text) {
    const QString before = button->text();
    button->setText(text);
    QTimer::singleShot(1200, button, [target = QPointer<QPushButton>(button), before] {
        if (target) {
            target->setText(before);
        }
    });
}

}  // namespace tevra::PageKit
