#include "capture/qt/portal_remote_desktop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QTimer>
#include <fstream>

#include "base/atomic_file.h"
#include "capture/paste_chords.h"
#include "capture/qt/portal_request.h"

namespace tevra {
namespace {

// The keys of the chords, as the kernel numbers them (evdev), plus the eight
// by which X and XKB number them higher, as KeyStroke does.
constexpr unsigned kXOffset = 8;
constexpr ChordKeyCodes kChordKeys = {.control = 29 + kXOffset,
                                      .shift = 42 + kXOffset,
                                      .v = 47 + kXOffset,
                                      .c = 46 + kXOffset,
                                      .insert = 110 + kXOffset};

constexpr uint kKeyboard = 1;
constexpr uint kPersistUntilRevoked = 2;

std::string readToken(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::string token;
    std::getline(in, token);
    return token;
}

}  // namespace

PortalRemoteDesktop::PortalRemoteDesktop(std::filesystem::path tokenFile, LogLine log,
                                         QDBusConnection bus)
    : bus_(std::move(bus)), tokenFile_(std::move(tokenFile)), log_(std::move(log)) {}

void PortalRemoteDesktop::start() {
    // Restoring needs version 2 of the interface; older portals ask each time.
    QDBusMessage get = QDBusMessage::createMethodCall(PortalRequest::service, PortalRequest::path,
                                                      "org.freedesktop.DBus.Properties", "Get");
    get.setArguments({QString(interface), QStringLiteral("version")});
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(get), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                const QDBusMessage reply = finished->reply();
                if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
                    log_("remote desktop portal: none on the session bus");
                    return;
                }
                version_ = reply.arguments().first().value<QDBusVariant>().variant().toUInt();
                createSession();
            });
}

void PortalRemoteDesktop::createSession() {
    QVariantMap options{{"session_handle_token", PortalRequest::token()}};
    PortalRequest::call(
        bus_, interface, "CreateSession", {}, options,
        [this](uint response, const QVariantMap& results) {
            const QString session = results.value("session_handle").toString();
            if (response != 0 || session.isEmpty()) {
                log_("remote desktop portal: no session (" + std::to_string(response) + ")");
                return;
            }
            selectDevices(session);
        });
}

void PortalRemoteDesktop::selectDevices(const QString& session) {
    QVariantMap options{{"types", kKeyboard}};
    if (version_ >= 2) {
        options.insert("persist_mode", kPersistUntilRevoked);
        if (const std::string token = readToken(tokenFile_); !token.empty()) {
            options.insert("restore_token", QString::fromStdString(token));
        }
    }
    PortalRequest::call(
        bus_, interface, "SelectDevices", {QVariant::fromValue(QDBusObjectPath(session))}, options,
        [this, session](uint response, const QVariantMap&) {
            if (response != 0) {
                log_("remote desktop portal: keyboard refused (" + std::to_string(response) + ")");
                return;
            }
            startSession(session);
        });
}

void PortalRemoteDesktop::startSession(const QString& session) {
    PortalRequest::call(
        bus_, interface, "Start", {QVariant::fromValue(QDBusObjectPath(session)), QString()}, {},
        [this, session](uint response, const QVariantMap& results) {
            if (response != 0 || (results.value("devices").toUInt() & kKeyboard) == 0) {
                log_("remote desktop portal: not started (" + std::to_string(response) + ")");
                return;
            }
            if (const QString token = results.value("restore_token").toString(); !token.isEmpty()) {
                // A token not kept means one more question at the next start.
                writeFileAtomically(tokenFile_, token.toStdString() + "\n");
            }
            session_ = session;
            log_("remote desktop portal: keyboard granted");
        });
}

std::optional<KeySequence> PortalRemoteDesktop::pasteSequence() {
    if (!isAvailable()) {
        return std::nullopt;
    }
    return pasteStrokes(PasteChord::ctrlV, kChordKeys);
}

std::optional<KeySequence> PortalRemoteDesktop::copySequence() {
    if (!isAvailable()) {
        return std::nullopt;
    }
    return copyStrokes(PasteChord::ctrlV, kChordKeys);
}

void PortalRemoteDesktop::post(const KeySequence& events) {
    if (!isAvailable()) {
        return;
    }
    const bool idle = pending_.empty();
    pending_.insert(pending_.end(), events.begin(), events.end());
    if (idle) {
        sendNext();
    }
}

void PortalRemoteDesktop::sendNext() {
    if (pending_.empty()) {
        return;
    }
    const KeyStroke stroke = pending_.front();
    QDBusMessage message = QDBusMessage::createMethodCall(
        PortalRequest::service, PortalRequest::path, interface, "NotifyKeyboardKeycode");
    message.setArguments({QVariant::fromValue(QDBusObjectPath(session_)), QVariantMap(),
                          static_cast<int>(stroke.keycode - kXOffset),
                          static_cast<uint>(stroke.down ? 1 : 0)});
    // One key at a time, each once the portal has taken the one before and
    // the compositor has had a moment for it: a Ctrl sent on the heels of
    // the V may not yet hold when the V arrives, which then types a "v".
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                pending_.pop_front();
                QTimer::singleShot(keyGapMs, this, [this] { sendNext(); });
            });
}

}  // namespace tevra
