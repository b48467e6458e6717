#pragma once

#include <QImage>
#include <functional>
#include <memory>
#include <optional>

#include "screen_text/qt/screen_grab_window.h"

namespace tevra {

// The region picker's window: the frozen screen, darkened but for the
// rectangle being dragged, and a cross-hair pointer.
class RegionPickerWindow : public ScreenGrabWindow {
public:
    RegionPickerWindow(std::shared_ptr<const ScreenImage> image, const ScreenArea& screen);

    // The chosen part of the picture, in its own pixels; nullopt on Escape or
    // on a click that dragged out nothing.
    std::function<void(std::optional<QImage>)> onFinish;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    QRectF selection() const;
    void finish(std::optional<QImage> region);

    std::shared_ptr<const ScreenImage> screen_;
    QImage picture_;
    std::optional<QPointF> start_;
    QPointF end_;
};

}  // namespace tevra
