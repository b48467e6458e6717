#pragma once

#include <QWidget>

namespace tevra {

// The HUD's frameless panel: a dark translucent capsule that floats above
// every window and never takes the focus, the keyboard or the mouse.
class HudPanel : public QWidget {
public:
    HudPanel();

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace tevra
