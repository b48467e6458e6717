#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QVariantMap>
#include <functional>

namespace tevra {

// One call of an XDG desktop portal that answers through a Request object:
// the call returns at once, and the answer comes later as the Request's
// Response signal, which may wait on a dialog for as long as the user takes.
// Nothing here blocks; done runs on the main thread with the response code
// (0 granted, 1 cancelled, 2 failed) and the results. The options passed
// get their handle_token added.
class PortalRequest : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(uint response, const QVariantMap& results)>;

    static constexpr const char* service = "org.freedesktop.portal.Desktop";
    static constexpr const char* path = "/org/freedesktop/portal/desktop";

    // The arguments come before the options, which are the call's last.
    static void call(QDBusConnection bus, const QString& interface, const QString& method,
                     QVariantList arguments, QVariantMap options, Done done);

    // Tells the portals which application a program started outside a
    // sandbox is, where the desktop cannot tell from how it was started (a
    // terminal). Must go before any other portal call on the connection;
    // portals before 1.19 have no such registry, and the call then fails
    // without harm.
    static void registerHostApp(QDBusConnection bus, const QString& appId);

    // A fresh token for handle_token and session_handle_token.
    static QString token();

private:
    PortalRequest(QDBusConnection bus, QString requestPath, Done done);

private slots:
    void onResponse(uint response, const QVariantMap& results);

private:
    QDBusConnection bus_;
    QString requestPath_;
    Done done_;
};

}  // namespace tevra
