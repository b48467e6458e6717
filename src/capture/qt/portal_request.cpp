#include "capture/qt/portal_request.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <atomic>

namespace tevra {

QString PortalRequest::token() {
    static std::atomic<int> next{0};
    return QStringLiteral("tevra%1").arg(++next);
}

void PortalRequest::registerHostApp(QDBusConnection bus, const QString& appId) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.host.portal.Registry"),
        QStringLiteral("Register"));
    message.setArguments({appId, QVariantMap()});
    bus.asyncCall(message);
}

PortalRequest::PortalRequest(QDBusConnection bus, QString requestPath, Done done)
    : bus_(std::move(bus)), requestPath_(std::move(requestPath)), done_(std::move(done)) {}

void PortalRequest::call(QDBusConnection bus, const QString& interface, const QString& method,
                         QVariantList arguments, QVariantMap options, Done done) {
    const QString handle = token();
    options.insert(QStringLiteral("handle_token"), handle);
    // The portal names the Request after our unique name and the token, so
    // its answer can be awaited before the call is even sent.
    QString sender = bus.baseService().mid(1);
    sender.replace('.', '_');
    const QString requestPath =
        QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, handle);
    auto* request = new PortalRequest(bus, requestPath, std::move(done));
    bus.connect(service, requestPath, QStringLiteral("org.freedesktop.portal.Request"),
                QStringLiteral("Response"), request, SLOT(onResponse(uint, QVariantMap)));

    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    arguments.append(options);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(message), request);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, request,
                     [request](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         if (finished->isError()) {
                             // No portal, or it refused the call outright.
                             request->onResponse(2, {});
                         }
                     });
}

void PortalRequest::onResponse(uint response, const QVariantMap& results) {
    bus_.disconnect(service, requestPath_, QStringLiteral("org.freedesktop.portal.Request"),
                    QStringLiteral("Response"), this, SLOT(onResponse(uint, QVariantMap)));
    if (done_) {
        auto done = std::move(done_);
        done_ = nullptr;
        done(response, results);
    }
    deleteLater();
}

}  // namespace tevra
