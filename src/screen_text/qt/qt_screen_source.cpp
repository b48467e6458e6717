#include "screen_text/qt/qt_screen_source.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace tevra {

std::optional<ScreenArea> QtScreenSource::screenUnderPointer() {
    QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
    if (!screen) {
        screen = QGuiApplication::primaryScreen();
    }
    if (!screen) {
        return std::nullopt;
    }
    // Qt keeps a screen's top left in device pixels and scales only its size.
    const QRect geometry = screen->geometry();
    const double ratio = screen->devicePixelRatio();
    return ScreenArea{screen->name().toStdString(), geometry.x(), geometry.y(),
                      static_cast<int>(std::lround(geometry.width() * ratio)),
                      static_cast<int>(std::lround(geometry.height() * ratio))};
}

}  // namespace tevra
