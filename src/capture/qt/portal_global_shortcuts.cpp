#include "capture/qt/portal_global_shortcuts.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QPointer>
#include <map>

#include "capture/qt/portal_request.h"

namespace tevra {

// One shortcut as the portal passes it: a(sa{sv}).
struct PortalShortcut {
    QString id;
    QVariantMap options;
};

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.id << shortcut.options;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.options;
    argument.endStructure();
    return argument;
}

}  // namespace tevra

Q_DECLARE_METATYPE(tevra::PortalShortcut)
Q_DECLARE_METATYPE(QList<tevra::PortalShortcut>)

namespace tevra {
namespace {

void registerTypes() {
    static const bool registered = [] {
        qDBusRegisterMetaType<PortalShortcut>();
        qDBusRegisterMetaType<QList<PortalShortcut>>();
        return true;
    }();
    (void)registered;
}

QVariant toPortal(const std::vector<GlobalShortcuts::Shortcut>& shortcuts) {
    QList<PortalShortcut> list;
    for (const auto& shortcut : shortcuts) {
        QVariantMap options{{"description", QString::fromStdString(shortcut.description)}};
        if (!shortcut.preferredTrigger.empty()) {
            options.insert("preferred_trigger", QString::fromStdString(shortcut.preferredTrigger));
        }
        list.append({QString::fromStdString(shortcut.id), options});
    }
    return QVariant::fromValue(list);
}

const QString kPortalPath = QString::fromLatin1(PortalRequest::path);

}  // namespace

PortalGlobalShortcuts::PortalGlobalShortcuts(MainQueue& queue, LogLine log, QDBusConnection bus)
    : queue_(queue), log_(std::move(log)), bus_(std::move(bus)) {
    registerTypes();
}

PortalGlobalShortcuts::~PortalGlobalShortcuts() {
    close();
}

void PortalGlobalShortcuts::bind(const std::vector<Shortcut>& shortcuts, Handlers handlers) {
    shortcuts_ = shortcuts;
    handlers_ = std::move(handlers);
    // GNOME before 48 and wlroots' own portal have no such interface.
    QDBusMessage get = QDBusMessage::createMethodCall(PortalRequest::service, PortalRequest::path,
                                                      "org.freedesktop.DBus.Properties", "Get");
    get.setArguments({QString(interface), QStringLiteral("version")});
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                if (closed_) {
                    return;
                }
                if (finished->isError()) {
                    fail("none on the session bus");
                    return;
                }
                createSession();
            });
}

void PortalGlobalShortcuts::createSession() {
    QPointer<PortalGlobalShortcuts> self(this);
    QVariantMap options{{"session_handle_token", QString::fromLatin1(sessionToken)},
                        {"shortcuts", toPortal(shortcuts_)}};
    PortalRequest::call(bus_, interface, "CreateSession", {}, options,
                        [self](uint response, const QVariantMap& results) {
                            if (!self || self->closed_) {
                                return;
                            }
                            const QString session = results.value("session_handle").toString();
                            if (response != 0 || session.isEmpty()) {
                                self->fail("no session (" + std::to_string(response) + ")");
                                return;
                            }
                            self->session_ = session;
                            self->listen(true);
                            self->bindShortcuts();
                        });
}

void PortalGlobalShortcuts::bindShortcuts() {
    QPointer<PortalGlobalShortcuts> self(this);
    PortalRequest::call(
        bus_, interface, "BindShortcuts",
        {QVariant::fromValue(QDBusObjectPath(session_)), toPortal(shortcuts_), QString()}, {},
        [self](uint response, const QVariantMap& results) {
            if (!self || self->closed_) {
                return;
            }
            if (response != 0) {
                self->fail("the shortcuts were refused (" + std::to_string(response) + ")");
                return;
            }
            self->logTriggers(results);
        });
}

void PortalGlobalShortcuts::logTriggers(const QVariantMap& results) {
    if (!log_) {
        return;
    }
    QList<PortalShortcut> bound;
    results.value("shortcuts").value<QDBusArgument>() >> bound;
    std::map<std::string, std::string> triggers;
    for (const PortalShortcut& shortcut : bound) {
        triggers[shortcut.id.toStdString()] =
            shortcut.options.value("trigger_description").toString().toStdString();
    }
    // In Tevra's order, which the portal does not keep.
    std::string line = "global shortcuts portal: bound";
    for (const Shortcut& shortcut : shortcuts_) {
        const auto trigger = triggers.find(shortcut.id);
        line += " " + shortcut.id + "=" +
                (trigger == triggers.end() || trigger->second.empty() ? std::string("(no key)")
                                                                      : trigger->second);
    }
    log_(line);
}

void PortalGlobalShortcuts::fail(const std::string& reason) {
    if (handlers_.failed) {
        handlers_.failed(reason);
    }
}

void PortalGlobalShortcuts::listen(bool on) {
    for (const char* name : {"Activated", "Deactivated"}) {
        if (on) {
            bus_.connect(PortalRequest::service, kPortalPath, interface, name, this,
                         SLOT(onSignal(QDBusMessage)));
        } else {
            bus_.disconnect(PortalRequest::service, kPortalPath, interface, name, this,
                            SLOT(onSignal(QDBusMessage)));
        }
    }
}

void PortalGlobalShortcuts::onSignal(const QDBusMessage& message) {
    // Activated and Deactivated: (o session, s id, t timestamp in ms, a{sv}).
    const QVariantList arguments = message.arguments();
    if (closed_ || arguments.size() < 3 ||
        arguments.at(0).value<QDBusObjectPath>().path() != session_) {
        return;
    }
    const std::string id = arguments.at(1).toString().toStdString();
    const qulonglong timestamp = arguments.at(2).toULongLong();
    // KDE's backend sends no time; the arrival here stands in for it.
    const double at = timestamp != 0 ? static_cast<double>(timestamp) / 1000.0 : queue_.now();
    const auto& handler = message.member() == QLatin1String("Activated") ? handlers_.activated
                                                                         : handlers_.deactivated;
    if (handler) {
        handler(id, at);
    }
}

void PortalGlobalShortcuts::close() {
    if (closed_) {
        return;
    }
    closed_ = true;
    if (session_.isEmpty()) {
        return;
    }
    listen(false);
    QDBusMessage close = QDBusMessage::createMethodCall(PortalRequest::service, session_,
                                                        "org.freedesktop.portal.Session", "Close");
    bus_.asyncCall(close);
    session_.clear();
}

}  // namespace tevra
