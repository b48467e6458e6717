#include "ui/qt/theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>
#include <memory>

namespace tevra::Theme {
namespace {

QPalette lightPalette() {
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette = fusion->standardPalette();
    palette.setColor(QPalette::Highlight, QColor(0x3b, 0x6e, 0xd8));
    return palette;
}

QPalette darkPalette() {
    QPalette palette;
    const QColor window(0x24, 0x25, 0x2a);
    const QColor base(0x1b, 0x1c, 0x20);
    const QColor text(0xe8, 0xe8, 0xec);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::PlaceholderText, QColor(0x9a, 0x9b, 0xa3));
    palette.setColor(QPalette::Button, QColor(0x33, 0x34, 0x3a));
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::Light, QColor(0x48, 0x49, 0x50));
    palette.setColor(QPalette::Midlight, QColor(0x3a, 0x3b, 0x42));
    palette.setColor(QPalette::Mid, QColor(0x4a, 0x4b, 0x52));
    palette.setColor(QPalette::Dark, QColor(0x15, 0x15, 0x18));
    palette.setColor(QPalette::Shadow, Qt::black);
    palette.setColor(QPalette::Highlight, QColor(0x5b, 0x8d, 0xef));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(0x7d, 0xa7, 0xf5));
    for (auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, QColor(0x70, 0x71, 0x78));
    }
    return palette;
}

// The style the desktop gave the program before any pinning.
QString& desktopStyle() {
    static QString name;
    return name;
}

}  // namespace

void applyAppearance(const std::string& appearance) {
    if (desktopStyle().isEmpty()) {
        desktopStyle() = QApplication::style()->name();
    }
    if (appearance == "light" || appearance == "dark") {
        QApplication::setStyle(QStringLiteral("Fusion"));
        QApplication::setPalette(appearance == "dark" ? darkPalette() : lightPalette());
        return;
    }
    // Qt's own styles stand in where the desktop names none.
    const QString style =
        desktopStyle().compare(QStringLiteral("windows"), Qt::CaseInsensitive) == 0
            ? QStringLiteral("Fusion")
            : desktopStyle();
    QApplication::setStyle(style);
    QApplication::setPalette(QApplication::style()->standardPalette());
}

bool isDark() {
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

}  // namespace tevra::Theme
