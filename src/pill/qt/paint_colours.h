#pragma once

#include <QColor>

namespace tevra {

// A colour at an opacity given as a fraction, for the pill's and the HUD's drawing.
inline QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

inline QColor white(double alpha) {
    return withAlpha(QColor(Qt::white), alpha);
}

}  // namespace tevra
