#include "screen_text/qt/selection_view.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace tevra {
namespace {

constexpr const char* kHint =
    "drag to select \u00b7 click a line \u00b7 \u23ce copy \u00b7 esc cancel";
constexpr const char* kReadingHint = "reading the screen\u2026";

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

QFont fontOfSize(int pixelSize, QFont::Weight weight = QFont::Normal) {
    QFont f = QGuiApplication::font();
    f.setPixelSize(pixelSize);
    f.setWeight(weight);
    return f;
}

SelectionState::Key keyOf(int key) {
    switch (key) {
        case Qt::Key_Return:
            return SelectionState::Key::returnKey;
        case Qt::Key_Enter:
            return SelectionState::Key::keypadEnter;
        case Qt::Key_Escape:
            return SelectionState::Key::escape;
        default:
            return SelectionState::Key::other;
    }
}

}  // namespace

SelectionView::SelectionView(std::shared_ptr<const ScreenImage> image, std::vector<Rect> windows,
                             QWidget* parent)
    : QWidget(parent),
      screen_(std::move(image)),
      // The picture is shared, not copied: screen_ keeps its pixels alive.
      picture_(reinterpret_cast<const uchar*>(screen_->pixels.data()), screen_->width,
               screen_->height, screen_->width * 4, QImage::Format_RGB32),
      windows_(std::move(windows)) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::IBeamCursor);
}

void SelectionView::setWords(const std::vector<OCRWord>& words) {
    state_.emplace(width(), height(), words, windows_);
    update();
}

ViewPoint SelectionView::toView(const QPointF& point) const {
    return {point.x(), height() - point.y()};
}

QRectF SelectionView::toWidget(const Rect& rect) const {
    return {rect.x, height() - rect.maxY(), rect.width, rect.height};
}

void SelectionView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    if (state_) {
        state_->resize(width(), height());
    }
}

void SelectionView::mousePressEvent(QMouseEvent* event) {
    pressed_ = true;
    if (state_ && state_->mouseDown(toView(event->position()))) {
        update();
    }
}

void SelectionView::mouseMoveEvent(QMouseEvent* event) {
    if (!state_) {
        return;
    }
    const ViewPoint point = toView(event->position());
    if (pressed_ ? state_->mouseDragged(point) : state_->mouseMoved(point)) {
        update();
    }
}

void SelectionView::mouseReleaseEvent(QMouseEvent* event) {
    pressed_ = false;
    if (state_ && state_->mouseUp(toView(event->position()))) {
        update();
    }
}

void SelectionView::keyPressEvent(QKeyEvent* event) {
    const auto key = keyOf(event->key());
    if (key == SelectionState::Key::other) {
        QWidget::keyPressEvent(event);
        return;
    }
    const auto result = state_                               ? state_->keyDown(key)
                        : key == SelectionState::Key::escape ? SelectionState::KeyResult::cancel
                                                             : SelectionState::KeyResult::copy;
    // A copy: finishing may take the view's window away, and onFinish with it.
    const auto finish = onFinish;
    if (!finish) {
        return;
    }
    if (result == SelectionState::KeyResult::copy) {
        finish(state_ ? state_->copiedText() : std::string());
    } else if (result == SelectionState::KeyResult::cancel) {
        finish(std::nullopt);
    }
}

void SelectionView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint(painter, state_ ? &*state_ : nullptr);
}

void SelectionView::paint(QPainter& painter, const SelectionState* state) const {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawImage(QRectF(rect()), picture_);
    painter.fillRect(rect(), withAlpha(Qt::black, 0.07));

    const QColor accent = QGuiApplication::palette().color(QPalette::Highlight);
    auto fillRounded = [&](const Rect& r, double radius, const QColor& color) {
        QPainterPath path;
        path.addRoundedRect(toWidget(r), radius, radius);
        painter.fillPath(path, color);
    };
    if (state) {
        const auto pending = state->pending();
        if (!pending) {
            if (const auto hover = state->hoverRect()) {
                fillRounded(*hover, 3, withAlpha(accent, 0.12));
            }
        }
        for (const auto& pick : state->captured()) {
            for (const Rect& r : state->selectionRects(pick)) {
                fillRounded(r, 3, withAlpha(accent, 0.22));
            }
        }
        if (pending) {
            for (const Rect& r : state->selectionRects(*pending)) {
                fillRounded(r, 3, withAlpha(accent, 0.4));
            }
        }
    }

    // The side panel of picks.
    const double panelLeft = width() - SelectionState::panelWidth;
    painter.fillRect(QRectF(panelLeft, 0, SelectionState::panelWidth, height()),
                     withAlpha(Qt::black, 0.55));
    painter.setPen(Qt::white);
    painter.setFont(fontOfSize(15, QFont::DemiBold));
    const QString header =
        QString::fromStdString(state ? state->panelHeader() : std::string("Copied  (0)"));
    painter.drawText(QRectF(panelLeft + 14, 0, SelectionState::panelWidth - 28, 40),
                     Qt::AlignLeft | Qt::AlignBottom, header);
    if (state) {
        painter.setFont(fontOfSize(11));
        for (const auto& row : state->panelRows()) {
            fillRounded(row.row, 6, withAlpha(Qt::white, 0.08));
            const QRectF text = toWidget(row.row).adjusted(8, 0, -(8 + 26), 0);
            painter.setPen(withAlpha(Qt::white, 0.85));
            painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                             QString::fromStdString(state->preview(row.selection)));
            const QRectF box = toWidget(row.closeBox);
            const QPointF c = box.center();
            painter.setPen(QPen(withAlpha(Qt::white, 0.6), 1.5));
            painter.drawLine(c + QPointF(-4, -4), c + QPointF(4, 4));
            painter.drawLine(c + QPointF(-4, 4), c + QPointF(4, -4));
        }
    }

    // The hint on a dark pill, centred left of the panel.
    const QString hint = QString::fromUtf8(state ? kHint : kReadingHint);
    painter.setFont(fontOfSize(13));
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(hint) + 28, metrics.height() + 12);
    const QRectF pill(panelLeft / 2 - size.width() / 2, height() - 24 - size.height(), size.width(),
                      size.height());
    QPainterPath path;
    path.addRoundedRect(pill, 8, 8);
    painter.fillPath(path, withAlpha(Qt::black, 0.6));
    painter.setPen(Qt::white);
    painter.drawText(pill, Qt::AlignCenter, hint);
}

QImage SelectionView::render(const SelectionState* state) {
    QImage image(size(), QImage::Format_RGB32);
    QPainter painter(&image);
    paint(painter, state);
    return image;
}

bool SelectionView::debugRenderPNG(const QString& path) {
    return render(state()).save(path, "PNG");
}

bool SelectionView::debugDragPNG(std::int64_t from, std::int64_t to, const QString& path) {
    if (!state_) {
        return false;
    }
    SelectionState dragging = *state_;
    const Rect a = dragging.viewBox(static_cast<std::size_t>(from));
    const Rect b = dragging.viewBox(static_cast<std::size_t>(to));
    dragging.mouseDown({a.midX(), a.midY()});
    dragging.mouseDragged({b.midX(), b.midY()});
    return render(&dragging).save(path, "PNG");
}

double SelectionView::debugRenderCoverage() {
    if (!state_ || state_->orderedWordCount() == 0) {
        return 0;
    }
    const SelectionState plainState(width(), height(), state_->words(), windows_);
    SelectionState all = plainState;
    for (const auto& line : all.lines()) {
        const Rect box = all.viewBox(static_cast<std::size_t>(line.front()));
        all.mouseDown({box.midX(), box.midY()});
        all.mouseUp({box.midX(), box.midY()});
    }
    const QImage plain = render(&plainState);
    const QImage picked = render(&all);
    std::size_t covered = 0;
    for (std::size_t i = 0; i < all.orderedWordCount(); ++i) {
        const QPointF centre = toWidget(all.viewBox(i)).center();
        const QPoint p(static_cast<int>(centre.x()), static_cast<int>(centre.y()));
        if (plain.rect().contains(p) && plain.pixel(p) != picked.pixel(p)) {
            ++covered;
        }
    }
    return static_cast<double>(covered) / static_cast<double>(all.orderedWordCount());
}

}  // namespace tevra
