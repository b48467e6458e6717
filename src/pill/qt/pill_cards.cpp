#include "pill/qt/pill_cards.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include "core/weft_runtime.h"
#include "pill/pill_texts.h"
#include "pill/qt/meter_painter.h"
#include "pill/qt/paint_colours.h"

namespace tevra::PillCards {
namespace {

constexpr double kPadding = 14;
const QColor kDarkText(22, 22, 26);
const QColor kPasted(52, 199, 89);

QFont font(double pixels, QFont::Weight weight = QFont::Normal) {
    QFont f;
    f.setPixelSize(static_cast<int>(pixels));
    f.setWeight(weight);
    return f;
}

QString qt(const std::string& text) {
    return QString::fromStdString(text);
}

// One paragraph of text, wrapped into at most maxLines lines, the last one
// cut short with an ellipsis when the text goes on.
void drawWrapped(QPainter& painter, const QRectF& box, QString text, int maxLines) {
    text.replace(QChar('\n'), QChar(' '));
    const QFontMetricsF metrics(painter.font());
    QTextLayout layout(text, painter.font());
    layout.beginLayout();
    double y = box.top();
    for (int n = 0; n < maxLines; ++n) {
        QTextLine line = layout.createLine();
        if (!line.isValid()) {
            break;
        }
        line.setLineWidth(box.width());
        const bool last = n == maxLines - 1;
        const QString part =
            last ? text.mid(line.textStart()) : text.mid(line.textStart(), line.textLength());
        const QString shown = metrics.elidedText(part.trimmed(), Qt::ElideRight, box.width());
        painter.drawText(QPointF(box.left(), y + metrics.ascent()), shown);
        y += metrics.lineSpacing();
    }
    layout.endLayout();
}

// The card's title at its top left, the painter made ready for text.
void beginCard(QPainter& painter, const QString& title, double width) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font(14, QFont::DemiBold));
    painter.setPen(white(0.95));
    painter.drawText(QRectF(kPadding, kPadding - 2, width, 22), Qt::AlignLeft | Qt::AlignVCenter,
                     title);
}

void drawChip(QPainter& painter, const QRectF& chip, const QString& label, bool selected) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(selected ? white(0.9) : white(0.1));
    painter.drawRoundedRect(chip, chip.height() / 2, chip.height() / 2);
    painter.setPen(selected ? kDarkText : white(0.85));
    painter.drawText(chip, Qt::AlignCenter, label);
}

}  // namespace

FullLayout fullLayout(QSizeF size) {
    FullLayout layout;
    const double width = size.width() - 2 * kPadding;
    layout.close = QRectF(size.width() - kPadding - 22, kPadding - 2, 22, 22);
    const double chipWidth = (width - 4 * 6) / 5;
    for (std::size_t i = 0; i < layout.languages.size(); ++i) {
        layout.languages[i] =
            QRectF(kPadding + static_cast<double>(i) * (chipWidth + 6), 44, chipWidth, 22);
    }
    layout.list = QRectF(kPadding - 6, 76, width + 12, size.height() - 76 - 10);
    const double rowHeight = layout.list.height() / static_cast<double>(layout.rows.size());
    for (std::size_t i = 0; i < layout.rows.size(); ++i) {
        layout.rows[i] =
            QRectF(layout.list.left(), layout.list.top() + static_cast<double>(i) * rowHeight,
                   layout.list.width(), rowHeight);
    }
    return layout;
}

Hover hit(const FullLayout& layout, QPointF point, int rowCount) {
    Hover hover;
    hover.close = layout.close.adjusted(-4, -4, 4, 4).contains(point);
    for (std::size_t i = 0; i < layout.languages.size(); ++i) {
        if (layout.languages[i].contains(point)) {
            hover.language = static_cast<int>(i);
        }
    }
    for (int i = 0; i < rowCount && i < static_cast<int>(layout.rows.size()); ++i) {
        if (layout.rows[static_cast<std::size_t>(i)].contains(point)) {
            hover.row = i;
        }
    }
    return hover;
}

void paintIdle(QPainter& painter, QSizeF size, PillDock dock) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(size.width() / 2, size.height() / 2);
    if (isVertical(dock)) {
        painter.rotate(90);
    }
    // A still wave of five bars, the meter at rest.
    static constexpr double heights[] = {0.35, 0.65, 1.0, 0.65, 0.35};
    constexpr double barWidth = 2.5;
    constexpr double step = 5;
    constexpr double tallest = 12;
    painter.setPen(Qt::NoPen);
    painter.setBrush(white(0.78));
    for (int i = 0; i < 5; ++i) {
        const double h = std::max(barWidth, tallest * heights[i]);
        painter.drawRoundedRect(QRectF((i - 2) * step - barWidth / 2, -h / 2, barWidth, h),
                                barWidth / 2, barWidth / 2);
    }
    painter.restore();
}

void paintRecording(QPainter& painter, QSizeF size, PillDock dock, const MeterEngine& meter) {
    // The bars stand across the capsule on every edge; on a side edge, where
    // the pill is taller, they have more room to breathe.
    const QPointF inset = isVertical(dock) ? QPointF(18, 16) : QPointF(14, 7);
    painter.save();
    painter.translate(inset);
    MeterPainter::paint(
        painter, {size.width() - 2 * inset.x(), size.height() - 2 * inset.y()},
        {meter.bars, motionOf(meter.lastMode), meter.doneProgress, meter.errorGlow});
    painter.restore();
}

void paintPeek(QPainter& painter, QSizeF size, const PillState& state, double now) {
    const WeftSettings& settings = state.runtime().settings();
    const double width = size.width() - 2 * kPadding;
    painter.save();
    beginCard(painter, "Tevra", width);
    painter.setFont(font(11, QFont::DemiBold));
    const QString language = qt(state.languageLabel());
    const double chipWidth = QFontMetricsF(painter.font()).horizontalAdvance(language) + 16;
    drawChip(painter, QRectF(size.width() - kPadding - chipWidth, kPadding - 1, chipWidth, 18),
             language, false);

    painter.setFont(font(12));
    const QRectF last(kPadding, 42, width, 34);
    if (state.history().empty()) {
        painter.setPen(white(0.6));
        drawWrapped(painter, last, qt(PillTexts::emptyHistory(settings)), 2);
    } else {
        const HistoryRow& newest = state.history().front();
        painter.setPen(white(0.5));
        painter.setFont(font(10.5));
        painter.drawText(QRectF(kPadding, 34, width, 12), Qt::AlignLeft | Qt::AlignVCenter,
                         qt(PillTexts::rowTime(newest.ts, now)));
        painter.setFont(font(12));
        painter.setPen(white(0.9));
        drawWrapped(painter, last.translated(0, 14), qt(newest.polished), 2);
    }

    painter.setPen(white(0.12));
    painter.drawLine(QPointF(kPadding, 94.5), QPointF(size.width() - kPadding, 94.5));

    const auto mappings = state.mappings();
    constexpr double top = 99;
    constexpr double rowHeight = 16.5;
    const int fitting = static_cast<int>((size.height() - top - 26) / rowHeight);
    for (int i = 0; i < static_cast<int>(mappings.size()) && i < fitting; ++i) {
        const double y = top + i * rowHeight;
        painter.setFont(font(10.5, QFont::DemiBold));
        painter.setPen(white(0.55));
        painter.drawText(QRectF(kPadding, y, 96, rowHeight), Qt::AlignLeft | Qt::AlignVCenter,
                         qt(PillTexts::keyLabel(mappings[static_cast<size_t>(i)].key, settings)));
        painter.setFont(font(12));
        painter.setPen(white(0.9));
        const QFontMetricsF metrics(painter.font());
        painter.drawText(QRectF(kPadding + 100, y, width - 100, rowHeight),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(qt(mappings[static_cast<size_t>(i)].name),
                                            Qt::ElideRight, width - 100));
    }

    painter.setFont(font(10.5));
    painter.setPen(white(0.45));
    painter.drawText(QRectF(kPadding, size.height() - 24, width, 16), Qt::AlignCenter,
                     PillTexts::peekHint);
    painter.restore();
}

void paintFull(QPainter& painter, QSizeF size, const PillState& state, const Hover& hover,
               double now) {
    const FullLayout layout = fullLayout(size);
    const double width = size.width() - 2 * kPadding;
    painter.save();
    beginCard(painter, "History", width - 30);
    painter.setPen(Qt::NoPen);
    painter.setBrush(white(hover.close ? 0.2 : 0.1));
    painter.drawEllipse(layout.close);
    painter.setPen(QPen(white(0.85), 1.6, Qt::SolidLine, Qt::RoundCap));
    const QPointF c = layout.close.center();
    painter.drawLine(c + QPointF(-4, -4), c + QPointF(4, 4));
    painter.drawLine(c + QPointF(-4, 4), c + QPointF(4, -4));

    painter.setFont(font(11, QFont::DemiBold));
    for (std::size_t i = 0; i < PillState::languages.size(); ++i) {
        const auto& language = PillState::languages[i];
        QRectF chip = layout.languages[i];
        if (hover.language == static_cast<int>(i) && language.code != state.language()) {
            chip = chip.adjusted(-1, -1, 1, 1);
        }
        drawChip(painter, chip,
                 QString::fromUtf8(language.label.data(), static_cast<int>(language.label.size())),
                 language.code == state.language());
    }

    const auto& rows = state.history();
    if (rows.empty()) {
        painter.setFont(font(12));
        painter.setPen(white(0.6));
        painter.drawText(layout.list, Qt::AlignCenter | Qt::TextWordWrap,
                         qt(PillTexts::emptyHistory(state.runtime().settings())));
    }
    for (std::size_t i = 0; i < rows.size() && i < layout.rows.size(); ++i) {
        const HistoryRow& row = rows[i];
        const QRectF box = layout.rows[i];
        const bool pasting = state.pastingRow() == row.id;
        const bool hovered = hover.row == static_cast<int>(i);
        if (pasting || hovered) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(pasting ? QColor(kPasted.red(), kPasted.green(), kPasted.blue(), 70)
                                     : white(0.09));
            painter.drawRoundedRect(box.adjusted(0, 1, 0, -1), 7, 7);
        }
        QString right = qt(PillTexts::rowTime(row.ts, now));
        if (pasting) {
            right = QStringLiteral("\u2713");
        } else if (hovered) {
            right = PillTexts::repasteHint;
        }
        painter.setFont(font(10.5, hovered || pasting ? QFont::DemiBold : QFont::Normal));
        const QFontMetricsF small(painter.font());
        const double rightWidth = small.horizontalAdvance(right);
        painter.setPen(pasting ? kPasted : white(hovered ? 0.75 : 0.45));
        const QRectF text = box.adjusted(6, 0, -6, 0);
        painter.drawText(text, Qt::AlignRight | Qt::AlignVCenter, right);
        painter.setFont(font(12.5));
        painter.setPen(white(0.92));
        const QFontMetricsF metrics(painter.font());
        QString polished = qt(row.polished);
        polished.replace(QChar('\n'), QChar(' '));
        painter.drawText(
            text.adjusted(0, 0, -(rightWidth + 10), 0), Qt::AlignLeft | Qt::AlignVCenter,
            metrics.elidedText(polished, Qt::ElideRight, text.width() - rightWidth - 10));
    }
    painter.restore();
}

}  // namespace tevra::PillCards
