#pragma once

#include <QRectF>
#include <array>
#include <optional>

#include "pill/meter_engine.h"
#include "pill/pill_state.h"

class QPainter;

namespace tevra {

// What each phase of the pill shows inside its capsule. The rectangles are in
// the content's own coordinates, its top left at 0, 0, the size of the phase's
// panel.
namespace PillCards {

// Where the history card takes its clicks.
struct FullLayout {
    QRectF close;
    std::array<QRectF, PillState::languages.size()> languages;
    std::array<QRectF, PillState::historyLimit> rows;
    QRectF list;  // the rows' area, where the empty history is said
};
FullLayout fullLayout(QSizeF size);

// What the pointer is over on the history card.
struct Hover {
    std::optional<int> row;
    std::optional<int> language;
    bool close = false;
};
Hover hit(const FullLayout& layout, QPointF point, int rowCount);

// The resting tab: a small still wave, lying along its edge.
void paintIdle(QPainter& painter, QSizeF size, PillDock dock);
// The meter of a capture.
void paintRecording(QPainter& painter, QSizeF size, PillDock dock, const MeterEngine& meter);
// The compact card: the language, the last dictation, the keys, the hint.
void paintPeek(QPainter& painter, QSizeF size, const PillState& state, double now);
// The history card.
void paintFull(QPainter& painter, QSizeF size, const PillState& state, const Hover& hover,
               double now);

}  // namespace PillCards
}  // namespace tevra
