#pragma once

#include <QColor>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QString>

namespace tevra::testing {

// Where the tests leave their pictures for a person to look at: the build's
// screenshots/ folder.
inline QString saveScreenshot(const QString& name, const QImage& image) {
    const QString dir = QStringLiteral(TEVRA_SCREENSHOT_DIR);
    QDir().mkpath(dir);
    const QString path = dir + "/" + name + ".png";
    image.save(path);
    return path;
}

// A picture with an alpha channel laid over a plain desktop of that colour,
// as a compositor would show it.
inline QImage over(const QImage& picture, QColor desktop) {
    QImage result(picture.size(), QImage::Format_ARGB32);
    result.setDevicePixelRatio(picture.devicePixelRatio());
    result.fill(desktop);
    QPainter painter(&result);
    painter.drawImage(QPointF(0, 0), picture);
    return result;
}

}  // namespace tevra::testing
