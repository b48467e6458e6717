#include "app/qt/tray_status_item.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace tevra {

TrayStatusItem::TrayStatusItem(std::function<void()> onOpen, std::function<void()> onQuit)
    : onOpen_(std::move(onOpen)) {
    QAction* open = menu_.addAction(QStringLiteral("Open Tevra"));
    QObject::connect(open, &QAction::triggered, [this] { activate(); });
    menu_.addSeparator();
    notes_ = menu_.addAction(QStringLiteral("Start notes"));
    notes_->setVisible(false);
    QObject::connect(notes_, &QAction::triggered, [this] {
        if (notesAction_) {
            notesAction_();
        }
    });
    menu_.addSeparator();
    QAction* quit = menu_.addAction(QStringLiteral("Quit Tevra"));
    QObject::connect(quit, &QAction::triggered, [onQuit = std::move(onQuit)] {
        if (onQuit) {
            onQuit();
        }
    });
    icon_.setIcon(drawIcon());
    icon_.setContextMenu(&menu_);
    QObject::connect(
        &icon_, &QSystemTrayIcon::activated, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) {
                activate();
            }
        });
}

void TrayStatusItem::show() {
    icon_.show();
}

void TrayStatusItem::activate() const {
    if (onOpen_) {
        onOpen_();
    }
}

void TrayStatusItem::setToolTip(const std::string& text) {
    icon_.setToolTip(QString::fromStdString(text));
}

void TrayStatusItem::setNotesEntry(const std::string& label, bool enabled,
                                   std::function<void()> action) {
    notesAction_ = std::move(action);
    notes_->setText(QString::fromStdString(label));
    notes_->setEnabled(enabled);
    notes_->setVisible(true);
}

QIcon TrayStatusItem::drawIcon() {
    QIcon icon;
    for (int size : {16, 22, 24, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 16.0, size / 16.0);
        // Five bars of a level meter, highest in the middle, on a dark disc.
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(32, 34, 40));
        painter.drawEllipse(QRectF(0.5, 0.5, 15, 15));
        painter.setBrush(Qt::white);
        const double heights[] = {3.5, 6.5, 9.5, 6.5, 3.5};
        for (int i = 0; i < 5; ++i) {
            const double x = 3.4 + i * 2.1;
            painter.drawRoundedRect(QRectF(x, 8 - heights[i] / 2, 1.3, heights[i]), 0.65, 0.65);
        }
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

}  // namespace tevra
