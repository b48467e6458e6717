#include "pill/qt/qt_pill_desktop.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include "pill/pill_layout.h"
#include "pill/qt/pill_window.h"

namespace tevra {

QtPillDesktop::QtPillDesktop(MainQueue& queue, std::function<bool()> compositing)
    : queue_(queue), compositing_(std::move(compositing)) {
    auto* app = qGuiApp;
    QObject::connect(app, &QGuiApplication::screenAdded, &context_, [this](QScreen* screen) {
        watch(screen);
        changed();
    });
    QObject::connect(app, &QGuiApplication::screenRemoved, &context_, [this] { changed(); });
    QObject::connect(app, &QGuiApplication::primaryScreenChanged, &context_, [this] { changed(); });
    for (QScreen* screen : QGuiApplication::screens()) {
        watch(screen);
    }
}

QtPillDesktop::~QtPillDesktop() = default;

void QtPillDesktop::watch(QScreen* screen) {
    QObject::connect(screen, &QScreen::availableGeometryChanged, &context_, [this] { changed(); });
}

void QtPillDesktop::changed() {
    if (changePending_) {
        return;
    }
    changePending_ = true;
    queue_.post([this, alive = std::weak_ptr<bool>(alive_)] {
        if (alive.expired()) {
            return;
        }
        changePending_ = false;
        if (observer_) {
            observer_();
        }
    });
}

PillScreen QtPillDesktop::describe(const QScreen& screen) {
    const QRect area = screen.availableGeometry();
    return {PillLayout::screenKey(screen.name().toStdString()),
            {static_cast<double>(area.x()), static_cast<double>(area.y()),
             static_cast<double>(area.width()), static_cast<double>(area.height())}};
}

std::vector<PillScreen> QtPillDesktop::screens() const {
    std::vector<PillScreen> all;
    for (const QScreen* screen : QGuiApplication::screens()) {
        all.push_back(describe(*screen));
    }
    return all;
}

std::optional<uint32_t> QtPillDesktop::mainScreen() const {
    if (const QScreen* primary = QGuiApplication::primaryScreen()) {
        return describe(*primary).key;
    }
    return std::nullopt;
}

PillPoint QtPillDesktop::mouseLocation() const {
    const QPoint at = QCursor::pos();
    return {static_cast<double>(at.x()), static_cast<double>(at.y())};
}

std::unique_ptr<PillPanel> QtPillDesktop::makePanel(uint32_t screen, PillController& controller) {
    QScreen* home = nullptr;
    for (QScreen* candidate : QGuiApplication::screens()) {
        if (describe(*candidate).key == screen) {
            home = candidate;
        }
    }
    return std::make_unique<PillWindow>(controller, queue_, home, compositing_);
}

void QtPillDesktop::setScreensChanged(std::function<void()> observer) {
    observer_ = std::move(observer);
}

}  // namespace tevra
