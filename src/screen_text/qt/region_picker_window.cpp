#include "screen_text/qt/region_picker_window.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

namespace tevra {
namespace {

// A rectangle smaller than this, in either direction, is a click.
constexpr double kMinimumDrag = 3;

}  // namespace

RegionPickerWindow::RegionPickerWindow(std::shared_ptr<const ScreenImage> image,
                                       const ScreenArea& screen)
    : ScreenGrabWindow(screen),
      screen_(std::move(image)),
      picture_(reinterpret_cast<const uchar*>(screen_->pixels.data()), screen_->width,
               screen_->height, screen_->width * 4, QImage::Format_RGB32) {
    setCursor(Qt::CrossCursor);
    setFocusPolicy(Qt::StrongFocus);
}

QRectF RegionPickerWindow::selection() const {
    return start_ ? QRectF(*start_, end_).normalized() : QRectF();
}

void RegionPickerWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.drawImage(QRectF(rect()), picture_);
    const QRectF chosen = selection();
    QPainterPath dim;
    dim.addRect(QRectF(rect()));
    if (!chosen.isEmpty()) {
        QPainterPath hole;
        hole.addRect(chosen);
        dim = dim.subtracted(hole);
    }
    painter.fillPath(dim, QColor(0, 0, 0, 90));
    if (!chosen.isEmpty()) {
        painter.setPen(QPen(Qt::white, 1));
        painter.drawRect(chosen);
    }
}

void RegionPickerWindow::mousePressEvent(QMouseEvent* event) {
    start_ = event->position();
    end_ = event->position();
    update();
}

void RegionPickerWindow::mouseMoveEvent(QMouseEvent* event) {
    if (start_) {
        end_ = event->position();
        update();
    }
}

void RegionPickerWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (!start_) {
        return;
    }
    end_ = event->position();
    const QRectF chosen = selection();
    if (chosen.width() < kMinimumDrag || chosen.height() < kMinimumDrag) {
        finish(std::nullopt);
        return;
    }
    // From the window's points to the picture's pixels.
    const double sx = static_cast<double>(picture_.width()) / width();
    const double sy = static_cast<double>(picture_.height()) / height();
    const QRect pixels =
        QRectF(chosen.x() * sx, chosen.y() * sy, chosen.width() * sx, chosen.height() * sy)
            .toAlignedRect()
            .intersected(picture_.rect());
    finish(picture_.copy(pixels));
}

void RegionPickerWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        finish(std::nullopt);
    } else {
        ScreenGrabWindow::keyPressEvent(event);
    }
}

void RegionPickerWindow::finish(std::optional<QImage> region) {
    if (auto done = std::move(onFinish)) {
        onFinish = nullptr;
        done(std::move(region));
    }
}

}  // namespace tevra
