#include "pill/qt/hud_panel.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include "pill/hud_geometry.h"
#include "pill/qt/paint_colours.h"

namespace tevra {

// A tool-tip window: the window system places it above others and never hands
// it the focus, not even when it appears.
HudPanel::HudPanel()
    : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::WindowTransparentForInput |
                           Qt::X11BypassWindowManagerHint) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(static_cast<int>(HudGeometry::pillWidth),
                 static_cast<int>(HudGeometry::pillHeight));
}

void HudPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    const double radius = bounds.height() / 2;
    QPainterPath capsule;
    capsule.addRoundedRect(bounds, radius, radius);

    // No compositor blur to rely on on X11: a dark, mostly opaque fill stands
    // in for the frosted background and keeps the bars legible on any wallpaper.
    painter.fillPath(capsule, QColor(22, 22, 26, 204));

    QLinearGradient sheen(0, 0, 0, bounds.height() / 2);
    sheen.setColorAt(0, white(0.12));
    sheen.setColorAt(1, white(0));
    painter.save();
    painter.setClipPath(capsule);
    painter.fillRect(QRectF(0, 0, bounds.width(), bounds.height() / 2), sheen);
    painter.restore();

    const QRectF border = bounds.adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(white(0.14), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(border, border.height() / 2, border.height() / 2);
}

}  // namespace tevra
