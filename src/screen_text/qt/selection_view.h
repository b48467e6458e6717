#pragma once

#include <QImage>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "screen_text/screen_image.h"
#include "screen_text/selection_state.h"

namespace tevra {

// The selection tool's view: the frozen screen, dimmed a little, the line
// under the pointer, the picks, the side panel of picks and the hint. The
// words arrive after the view is up; until then it shows the picture alone
// and only Escape (or Return, copying nothing) does anything.
class SelectionView : public QWidget {
public:
    SelectionView(std::shared_ptr<const ScreenImage> image, std::vector<Rect> windows,
                  QWidget* parent = nullptr);

    // The text on Return (empty when nothing was picked), nullopt on Escape.
    std::function<void(std::optional<std::string>)> onFinish;

    void setWords(const std::vector<OCRWord>& words);
    bool hasWords() const { return state_.has_value(); }
    const SelectionState* state() const { return state_ ? &*state_ : nullptr; }
    std::size_t orderedWordCount() const { return state_ ? state_->orderedWordCount() : 0; }

    // Inspection: the view as it stands, and with a drag from one word to
    // another under way, written as PNG files.
    bool debugRenderPNG(const QString& path);
    bool debugDragPNG(std::int64_t from, std::int64_t to, const QString& path);
    // The share of the words whose centre the highlight of a pick visibly
    // covers when every line is picked: 1 when the drawing meets every word.
    double debugRenderCoverage();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    ViewPoint toView(const QPointF& point) const;
    QRectF toWidget(const Rect& rect) const;
    void paint(QPainter& painter, const SelectionState* state) const;
    QImage render(const SelectionState* state);

    std::shared_ptr<const ScreenImage> screen_;
    QImage picture_;
    std::vector<Rect> windows_;
    std::optional<SelectionState> state_;
    bool pressed_ = false;
};

}  // namespace tevra
