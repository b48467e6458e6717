#pragma once

#include <QTimer>
#include <QWidget>

#include "screen_text/screen_source.h"

namespace tevra {

// A frameless window laid over one whole screen, above everything, that holds
// the pointer and the keyboard while it is shown. The window manager never
// manages it, so the application that had the focus keeps it underneath and
// has the keys back once the window goes. The base of the selection overlay
// and the region picker.
class ScreenGrabWindow : public QWidget {
public:
    explicit ScreenGrabWindow(const ScreenArea& screen);
    ~ScreenGrabWindow() override;

    // Shows the window over its screen and takes the pointer and keyboard,
    // trying again for a while if another client holds them (a hotkey's key
    // still down).
    void showOverScreen();
    // Hides it and lets go of both.
    void release();
    bool holdsKeyboard() const { return keyboard_; }

private:
    void tryGrabs();
    QWidget* keyReceiver();

    ScreenArea screen_;
    QTimer retry_;
    int attempts_ = 0;
    bool keyboard_ = false;
    bool pointer_ = false;
};

}  // namespace tevra
