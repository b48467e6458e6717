#include "pill/qt/meter_view.h"

#include <QPainter>
#include <QPointer>

#include "pill/hud_geometry.h"
#include "pill/qt/meter_painter.h"

namespace tevra {

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
    painter.translate(HudGeometry::glowMarginX, HudGeometry::glowMarginY);
    const PillSize size{width() - 2 * HudGeometry::glowMarginX,
                        height() - 2 * HudGeometry::glowMarginY};
    MeterPainter::paint(painter, size,
                        {meter_.bars, meter_.mode, meter_.doneProgress, meter_.errorGlow});
}

}  // namespace tevra
