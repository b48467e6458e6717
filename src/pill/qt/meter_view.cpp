#include "pill/qt/meter_view.h"

#include <QPainter>
#include <QPainterPath>
#include <QPointer>

#include "pill/hud_geometry.h"
#include "pill/meter_geometry.h"

namespace tevra {
namespace {

const QColor kOrange(255, 149, 0);

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

QRectF toQt(const PillRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

}  // namespace

MeterView::MeterView(MainQueue& queue, QWidget* parent) : QWidget(parent), queue_(queue) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

MeterView::~MeterView() {
    timer_.cancel();
}

void MeterView::startAnimating() {
    if (isAnimating()) {
        return;
    }
    timer_ = queue_.every(1.0 / 60, [view = QPointer<MeterView>(this)] {
        if (view) {
            view->meter_.step();
            view->update();
        }
    });
}

void MeterView::stopAnimating() {
    timer_.cancel();
}

void MeterView::setMeterFrame(const QRectF& frame) {
    const QRectF grown = frame.adjusted(-HudGeometry::glowMarginX, -HudGeometry::glowMarginY,
                                        HudGeometry::glowMarginX, HudGeometry::glowMarginY);
    setGeometry(grown.toAlignedRect());
}

void MeterView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(HudGeometry::glowMarginX, HudGeometry::glowMarginY);
    const PillSize size{width() - 2 * HudGeometry::glowMarginX,
                        height() - 2 * HudGeometry::glowMarginY};
    const HudMeter& m = meter_;
    const bool failed = m.mode == Mode::error;
    const QColor colour = failed ? kOrange : QColor(Qt::white);
    painter.setPen(Qt::NoPen);

    if (failed && m.errorGlow > 0) {
        const QRectF glow = toQt(HudGeometry::glowRect(size));
        painter.setBrush(withAlpha(kOrange, m.errorGlow * HudGeometry::glowAlpha));
        painter.drawRoundedRect(glow, glow.height() / 2, glow.height() / 2);
    }

    constexpr double radius = MeterGeometry::barWidth / 2;
    for (int i = 0; i < HudMeter::barCount; ++i) {
        const double value = m.bars[static_cast<size_t>(i)];
        const double alpha = HudGeometry::barAlpha(m.mode, value, m.doneProgress);
        if (alpha <= 0) {
            continue;
        }
        painter.setBrush(withAlpha(colour, alpha));
        painter.drawRoundedRect(toQt(MeterGeometry::barRect(i, HudMeter::barCount, value, size)),
                                radius, radius);
    }

    if (m.mode == Mode::done && m.doneProgress > 0) {
        const auto mark = MeterGeometry::checkMark(m.doneProgress, size);
        QPainterPath path(QPointF(mark.points[0].x, mark.points[0].y));
        path.lineTo(mark.points[1].x, mark.points[1].y);
        path.lineTo(mark.points[2].x, mark.points[2].y);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, MeterGeometry::checkLineWidth, Qt::SolidLine, Qt::RoundCap,
                            Qt::RoundJoin));
        painter.drawPath(path);
    }
}

}  // namespace tevra
