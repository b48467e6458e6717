#pragma once

#include <QPixmap>
#include <QPointF>
#include <QRectF>
#include <QWidget>
#include <functional>
#include <optional>

#include "base/main_queue.h"
#include "pill/pill_desktop.h"
#include "pill/qt/pill_cards.h"

class QScreen;

namespace tevra {

class PillController;

// One pill's panel: a frameless window above all others that the window
// manager never manages, so that it never takes the keyboard focus (a paste
// from its card reaches the application the user was in), while it takes the
// mouse for hover, clicks and drags. Its capsule is dark glass where a
// compositor blends it; without one, an opaque dark capsule cut to shape.
class PillWindow : public QWidget, public PillPanel {
public:
    // compositing: whether windows are blended now, asked at each change of
    // the capsule.
    PillWindow(PillController& controller, MainQueue& queue, QScreen* screen,
               std::function<bool()> compositing);
    ~PillWindow() override;

    PillRect frame() const override { return frame_; }
    void setFrame(const PillRect& frame) override;
    void setCapsule(const PillRect& capsule, bool animated) override;
    void orderFront() override;
    void orderOut() override;
    void redraw() override;

    // The capsule as drawn now, on the screen.
    QRectF capsule() const { return capsule_; }
    bool isOpaque() const { return opaque_; }
    // How much the capsule rounds at a size: a stadium when small, a card when large.
    static double cornerRadius(QSizeF size);
    static constexpr double glideSeconds = 0.24;

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    // Where the content of the present phase lies, in the window.
    QRectF contentRect() const;
    void click(QPointF inWindow);
    static void paintCapsule(QPainter& painter, QSizeF size, bool opaque);
    // The capsule without its content, at a scale of device pixels, kept
    // until its size or its look changes.
    const QPixmap& capsuleImage(QSizeF size, double scale);
    void capsuleMoved();
    void glideStep();

    PillController& controller_;
    MainQueue& queue_;
    std::function<bool()> compositing_;
    PillRect frame_;
    QRectF capsule_;
    QRectF capsuleTarget_;
    // The capsule's glide, on the main queue's clock.
    TimerHandle glide_;
    QRectF glideFrom_;
    double glideStarted_ = 0;
    bool opaque_ = false;
    std::optional<QPointF> pressedAt_;  // on the screen
    bool dragging_ = false;
    PillCards::Hover hover_;
    QPixmap capsuleImage_;
    QSizeF capsuleImageSize_;
    bool capsuleImageOpaque_ = false;
};

}  // namespace tevra
