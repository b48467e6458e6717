#include "pill/qt/qt_pill_desktop.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <map>

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

std::vector<std::pair<QScreen*, PillScreen>> QtPillDesktop::listed() {
    std::vector<std::pair<QScreen*, PillScreen>> all;
    std::map<QString, int> seen;
    for (QScreen* screen : QGuiApplication::screens()) {
        // Names repeat where each X screen has one output of the same name
        // (Xvfb's "screen"): the second of a name is "name#2", and so on.
        const int occurrence = ++seen[screen->name()];
        const QString name =
            occurrence == 1 ? screen->name() : screen->name() + "#" + QString::number(occurrence);
        const QRect area = screen->availableGeometry();
        all.emplace_back(
            screen,
            PillScreen{PillLayout::screenKey(name.toStdString()),
                       {static_cast<double>(area.x()), static_cast<double>(area.y()),
                        static_cast<double>(area.width()), static_cast<double>(area.height())}});
    }
    return all;
}

std::vector<PillScreen> QtPillDesktop::screens() const {
    std::vector<PillScreen> all;
    for (const auto& entry : listed()) {
        all.push_back(entry.second);
    }
    return all;
}

std::optional<uint32_t> QtPillDesktop::mainScreen() const {
    for (const auto& [screen, described] : listed()) {
        if (screen == QGuiApplication::primaryScreen()) {
            return described.key;
        }
    }
    return std::nullopt;
}

PillPoint QtPillDesktop::mouseLocation() const {
    const QPoint at = QCursor::pos();
    return {static_cast<double>(at.x()), static_cast<double>(at.y())};
}

std::unique_ptr<PillPanel> QtPillDesktop::makePanel(uint32_t screen, PillController& controller) {
    QScreen* home = nullptr;
    for (const auto& [candidate, described] : listed()) {
        if (described.key == screen) {
            home = candidate;
        }
    }
    return std::make_unique<PillWindow>(controller, queue_, home, compositing_);
}

void QtPillDesktop::setScreensChanged(std::function<void()> observer) {
    observer_ = std::move(observer);
}

}  // namespace tevra
