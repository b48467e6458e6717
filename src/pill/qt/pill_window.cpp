#include "pill/qt/pill_window.h"

#include <QEnterEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QRegion>
#include <QScreen>
#include <algorithm>
#include <cmath>

#include "pill/pill_controller.h"
#include "pill/pill_metrics.h"
#include "pill/qt/paint_colours.h"

namespace tevra {
namespace {

// The mouse must move this far, in points, before a press becomes a drag.
constexpr double kDragThreshold = 4;

QRectF toQt(const PillRect& rect) {
    return {rect.x, rect.y, rect.width, rect.height};
}

QRectF between(const QRectF& from, const QRectF& to, double t) {
    auto mix = [t](double a, double b) { return a + (b - a) * t; };
    return {mix(from.x(), to.x()), mix(from.y(), to.y()), mix(from.width(), to.width()),
            mix(from.height(), to.height())};
}

}  // namespace

PillWindow::PillWindow(PillController& controller, MainQueue& queue, QScreen* screen,
                       std::function<bool()> compositing)
    : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus | Qt::X11BypassWindowManagerHint),
      controller_(controller),
      queue_(queue),
      compositing_(std::move(compositing)) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);
    setWindowTitle(QStringLiteral("Tevra pill"));
    if (screen) {
        setScreen(screen);
    }
}

PillWindow::~PillWindow() {
    glide_.cancel();
}

double PillWindow::cornerRadius(QSizeF size) {
    return std::min(std::min(size.width(), size.height()) / 2, 18.0);
}

void PillWindow::setFrame(const PillRect& frame) {
    frame_ = frame;
    setGeometry(QRect(
        static_cast<int>(std::lround(frame.x)), static_cast<int>(std::lround(frame.y)),
        static_cast<int>(std::lround(frame.width)), static_cast<int>(std::lround(frame.height))));
    capsuleMoved();
}

void PillWindow::setCapsule(const PillRect& capsule, bool animated) {
    const QRectF target = toQt(capsule);
    const bool opaque = !(compositing_ && compositing_());
    const bool lookChanged = opaque != opaque_;
    opaque_ = opaque;
    if (target == capsuleTarget_ && (animated || capsule_ == target)) {
        if (lookChanged) {
            capsuleMoved();
        }
        return;
    }
    capsuleTarget_ = target;
    glide_.cancel();
    if (!animated || capsule_.isEmpty()) {
        capsule_ = target;
        capsuleMoved();
        return;
    }
    glideFrom_ = capsule_;
    glideStarted_ = queue_.now();
    glide_ = queue_.every(PillMetrics::meterFrameInterval, [window = QPointer<PillWindow>(this)] {
        if (window) {
            window->glideStep();
        }
    });
}

void PillWindow::glideStep() {
    const double t = std::min(1.0, (queue_.now() - glideStarted_) / glideSeconds);
    const double eased = 1 - std::pow(1 - t, 3);
    capsule_ = between(glideFrom_, capsuleTarget_, eased);
    if (t >= 1) {
        glide_.cancel();
        capsule_ = capsuleTarget_;
    }
    capsuleMoved();
}

void PillWindow::capsuleMoved() {
    const QRectF inWindow = capsule_.translated(-frame_.x, -frame_.y);
    if (opaque_) {
        // Without a compositor nothing blends the corners: the window is cut
        // to the capsule instead.
        QPainterPath shape;
        const double radius = cornerRadius(inWindow.size());
        shape.addRoundedRect(inWindow, radius, radius);
        setMask(QRegion(shape.toFillPolygon().toPolygon()));
    } else {
        clearMask();
    }
    update();
}

void PillWindow::orderFront() {
    show();
    raise();
}

void PillWindow::orderOut() {
    glide_.cancel();
    hide();
}

void PillWindow::redraw() {
    update();
}

QRectF PillWindow::contentRect() const {
    return capsuleTarget_.translated(-frame_.x, -frame_.y);
}

void PillWindow::paintCapsule(QPainter& painter, QSizeF size, bool opaque) {
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF capsule(QPointF(0, 0), size);
    const double radius = cornerRadius(size);
    QPainterPath shape;
    shape.addRoundedRect(capsule, radius, radius);
    // Dark glass where the compositor lets the desktop through; a solid dark
    // capsule where it cannot.
    painter.fillPath(shape, opaque ? QColor(30, 30, 35) : QColor(20, 20, 24, 214));
    QLinearGradient sheen(0, 0, 0, std::min(size.height(), 40.0));
    sheen.setColorAt(0, white(0.11));
    sheen.setColorAt(1, white(0));
    painter.fillPath(shape, sheen);
    if (!opaque) {
        // A dark outline keeps the glass apart from a light desktop.
        painter.setPen(QPen(QColor(0, 0, 0, 90), 1));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(shape);
    }
    const double innerRadius = std::max(0.0, radius - 1);
    painter.setPen(QPen(white(0.16), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(capsule.adjusted(1, 1, -1, -1), innerRadius, innerRadius);
}

const QPixmap& PillWindow::capsuleImage(QSizeF size, double scale) {
    if (capsuleImage_.isNull() || capsuleImageSize_ != size || capsuleImageOpaque_ != opaque_ ||
        capsuleImage_.devicePixelRatio() != scale) {
        capsuleImage_ = QPixmap((size * scale).toSize());
        capsuleImage_.setDevicePixelRatio(scale);
        capsuleImage_.fill(Qt::transparent);
        QPainter painter(&capsuleImage_);
        paintCapsule(painter, size, opaque_);
        capsuleImageSize_ = size;
        capsuleImageOpaque_ = opaque_;
    }
    return capsuleImage_;
}

void PillWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF capsule = capsule_.translated(-frame_.x, -frame_.y);
    if (capsule.isEmpty()) {
        return;
    }
    // The capsule changes only with its size: during a capture only the bars
    // are drawn afresh.
    painter.drawPixmap(capsule.topLeft(),
                       capsuleImage(capsule.size(), painter.deviceTransform().m11()));
    painter.setRenderHint(QPainter::Antialiasing);

    // The content of the phase stands where the capsule is going and shows
    // as the capsule opens over it.
    const QRectF content = contentRect();
    const PillState& state = controller_.state();
    const PillPhase phase = state.phase();
    const QSizeF size = content.size();
    const PillSize expected = PillMetrics::panelSize(phase, state.dock());
    const bool fits =
        size.width() >= expected.width - 0.5 && size.height() >= expected.height - 0.5;
    const double opened = (capsule.width() * capsule.height()) / (size.width() * size.height());
    if (capsule != content) {
        QPainterPath shape;
        const double radius = cornerRadius(capsule.size());
        shape.addRoundedRect(capsule, radius, radius);
        painter.setClipPath(shape);
        painter.setOpacity(std::clamp((opened - 0.6) / 0.4, 0.0, 1.0));
    }
    painter.translate(content.topLeft());
    const double now = HistoryRow::currentTimestamp();
    if (!fits || phase == PillPhase::idle) {
        PillCards::paintIdle(painter, size, state.dock());
    } else if (phase == PillPhase::recording) {
        PillCards::paintRecording(painter, size, state.dock(), controller_.meter());
    } else if (phase == PillPhase::peek) {
        PillCards::paintPeek(painter, size, state, now);
    } else {
        PillCards::paintFull(painter, size, state, hover_, now);
    }
}

void PillWindow::enterEvent(QEnterEvent*) {
    controller_.pointerEntered();
}

void PillWindow::leaveEvent(QEvent*) {
    hover_ = {};
    update();
}

void PillWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        pressedAt_ = event->globalPosition();
        dragging_ = false;
    }
}

void PillWindow::mouseMoveEvent(QMouseEvent* event) {
    PillState& state = controller_.state();
    if (pressedAt_ && (event->buttons() & Qt::LeftButton)) {
        const QPointF moved = event->globalPosition() - *pressedAt_;
        if (!dragging_ && std::abs(moved.x()) + std::abs(moved.y()) < kDragThreshold) {
            return;
        }
        const bool first = !dragging_;
        dragging_ = true;
        if (state.onDrag) {
            state.onDrag(first);
        }
        return;
    }
    if (state.phase() == PillPhase::full) {
        const PillCards::Hover hover = PillCards::hit(PillCards::fullLayout(contentRect().size()),
                                                      event->position() - contentRect().topLeft(),
                                                      static_cast<int>(state.history().size()));
        if (hover.row != hover_.row || hover.language != hover_.language ||
            hover.close != hover_.close) {
            hover_ = hover;
            update();
        }
    }
}

void PillWindow::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !pressedAt_) {
        return;
    }
    pressedAt_.reset();
    if (dragging_) {
        dragging_ = false;
        if (controller_.state().onMoveEnd) {
            controller_.state().onMoveEnd();
        }
        return;
    }
    click(event->position());
}

void PillWindow::click(QPointF inWindow) {
    PillState& state = controller_.state();
    switch (state.phase()) {
        case PillPhase::idle:
        case PillPhase::peek:
            state.openFull();
            return;
        case PillPhase::recording:
            return;
        case PillPhase::full:
            break;
    }
    const QRectF content = contentRect();
    const auto& rows = state.history();
    const PillCards::Hover hit =
        PillCards::hit(PillCards::fullLayout(content.size()), inWindow - content.topLeft(),
                       static_cast<int>(rows.size()));
    if (hit.close) {
        state.collapse();
    } else if (hit.language) {
        const auto& language = PillState::languages[static_cast<std::size_t>(*hit.language)];
        if (language.code != state.language()) {
            state.setLanguage(std::string(language.code));
        }
    } else if (hit.row) {
        controller_.repaste(rows[static_cast<std::size_t>(*hit.row)]);
    }
}

}  // namespace tevra
