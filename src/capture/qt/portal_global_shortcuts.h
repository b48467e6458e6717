#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include "base/main_queue.h"
#include "capture/global_shortcuts.h"
#include "capture/hotkey_backend.h"

namespace tevra {

// Tevra's shortcuts through the Global Shortcuts portal (KDE, GNOME 48 and
// later, Hyprland). The session always has the same token, by which the
// desktop keeps the keys the user gave the shortcuts across restarts. The
// shortcuts go with CreateSession too, where KDE's backend before Plasma 6
// reads them; later backends take them from BindShortcuts, which asks the
// user once.
class PortalGlobalShortcuts : public QObject, public GlobalShortcuts {
    Q_OBJECT

public:
    PortalGlobalShortcuts(MainQueue& queue, LogLine log,
                          QDBusConnection bus = QDBusConnection::sessionBus());
    ~PortalGlobalShortcuts() override;

    void bind(const std::vector<Shortcut>& shortcuts, Handlers handlers) override;
    void close() override;

    static constexpr const char* interface = "org.freedesktop.portal.GlobalShortcuts";
    static constexpr const char* sessionToken = "Tevra";

private slots:
    void onSignal(const QDBusMessage& message);

private:
    void createSession();
    void bindShortcuts();
    void logTriggers(const QVariantMap& results);
    void fail(const std::string& reason);
    void listen(bool on);

    MainQueue& queue_;
    LogLine log_;
    QDBusConnection bus_;
    std::vector<Shortcut> shortcuts_;
    Handlers handlers_;
    QString session_;
    bool closed_ = false;
};

}  // namespace tevra
