#include "pill/qt/meter_painter.h"

#include <QPainter>
#include <QPainterPath>

#include "pill/hud_geometry.h"
#include "pill/meter_geometry.h"
#include "pill/qt/paint_colours.h"

namespace tevra::MeterPainter {
namespace {

const QColor kOrange(255, 149, 0);

QRectF toQt(const PillRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

}  // namespace

void paint(QPainter& painter, PillSize size, const Frame& frame) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool failed = frame.motion == MeterMotion::error;
    const QColor colour = failed ? kOrange : QColor(Qt::white);
    painter.setPen(Qt::NoPen);

    if (failed && frame.errorGlow > 0) {
        const QRectF glow = toQt(HudGeometry::glowRect(size));
        painter.setBrush(withAlpha(kOrange, frame.errorGlow * HudGeometry::glowAlpha));
        painter.drawRoundedRect(glow, glow.height() / 2, glow.height() / 2);
    }

    constexpr double radius = MeterGeometry::barWidth / 2;
    const int barCount = static_cast<int>(frame.bars.size());
    for (int i = 0; i < barCount; ++i) {
        const double value = frame.bars[static_cast<size_t>(i)];
        const double alpha = HudGeometry::barAlpha(frame.motion, value, frame.doneProgress);
        if (alpha <= 0) {
            continue;
        }
        painter.setBrush(withAlpha(colour, alpha));
        painter.drawRoundedRect(toQt(MeterGeometry::barRect(i, barCount, value, size)), radius,
                                radius);
    }

    if (frame.motion == MeterMotion::done && frame.doneProgress > 0) {
        const auto mark = MeterGeometry::checkMark(frame.doneProgress, size);
        QPainterPath path(QPointF(mark.points[0].x, mark.points[0].y));
        path.lineTo(mark.points[1].x, mark.points[1].y);
        path.lineTo(mark.points[2].x, mark.points[2].y);
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, MeterGeometry::checkLineWidth, Qt::SolidLine, Qt::RoundCap,
                            Qt::RoundJoin));
        painter.drawPath(path);
    }
    painter.restore();
}

}  // namespace tevra::MeterPainter
