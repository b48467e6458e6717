#include "screen_text/qt/screen_grab_window.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace tevra {
namespace {

constexpr int kRetryMs = 25;
constexpr int kAttempts = 120;

}  // namespace

ScreenGrabWindow::ScreenGrabWindow(const ScreenArea& screen)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::X11BypassWindowManagerHint),
      screen_(screen) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    retry_.setInterval(kRetryMs);
    QObject::connect(&retry_, &QTimer::timeout, this, [this] { tryGrabs(); });
}

ScreenGrabWindow::~ScreenGrabWindow() {
    release();
}

QWidget* ScreenGrabWindow::keyReceiver() {
    return focusProxy() ? focusProxy() : this;
}

void ScreenGrabWindow::showOverScreen() {
    // Qt keeps a screen's top left in device pixels and scales its size.
    QScreen* target = QGuiApplication::primaryScreen();
    for (QScreen* candidate : QGuiApplication::screens()) {
        if (candidate->name() == QString::fromStdString(screen_.name)) {
            target = candidate;
        }
    }
    setGeometry(target ? target->geometry()
                       : QRect(screen_.x, screen_.y, screen_.width, screen_.height));
    show();
    raise();
    attempts_ = 0;
    tryGrabs();
}

void ScreenGrabWindow::tryGrabs() {
    QWindow* window = windowHandle();
    if (window && !keyboard_) {
        keyboard_ = window->setKeyboardGrabEnabled(true);
        if (keyboard_) {
            // Qt sends the keys to this widget (or its focus proxy) while the
            // grab lasts.
            keyReceiver()->grabKeyboard();
        }
    }
    if (window && !pointer_) {
        pointer_ = window->setMouseGrabEnabled(true);
    }
    if ((keyboard_ && pointer_) || ++attempts_ >= kAttempts) {
        retry_.stop();
    } else if (!retry_.isActive()) {
        retry_.start();
    }
}

void ScreenGrabWindow::release() {
    retry_.stop();
    if (QWindow* window = windowHandle()) {
        if (keyboard_) {
            keyReceiver()->releaseKeyboard();
            window->setKeyboardGrabEnabled(false);
        }
        if (pointer_) {
            window->setMouseGrabEnabled(false);
        }
    }
    keyboard_ = false;
    pointer_ = false;
    hide();
}

}  // namespace tevra
