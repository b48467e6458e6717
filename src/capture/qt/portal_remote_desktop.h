#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <deque>
#include <filesystem>
#include <memory>

#include "capture/hotkey_backend.h"
#include "capture/key_injector.h"

namespace tevra {

// The paste chord through the Remote Desktop portal (KDE, GNOME): a session
// with the keyboard alone, asked for once and then restored with the token
// the portal gave, which is kept in tokenFile, so that the user grants it
// only the first time. Until the session has started, nothing is available
// and dictations stay on the clipboard.
class PortalRemoteDesktop : public QObject, public KeyInjector {
    Q_OBJECT

public:
    PortalRemoteDesktop(std::filesystem::path tokenFile, LogLine log,
                        QDBusConnection bus = QDBusConnection::sessionBus());

    // Asks the portal for the session; the answer comes later.
    void start();

    bool isAvailable() override { return !session_.isEmpty(); }
    std::optional<KeySequence> pasteSequence() override;
    bool pasteReadsPrimary() override { return false; }
    // The portal tells nothing of the keys the user holds.
    bool modifiersHeld() override { return false; }
    std::optional<KeySequence> copySequence() override;
    void post(const KeySequence& events) override;

    static constexpr const char* interface = "org.freedesktop.portal.RemoteDesktop";
    // The pause between two keys of a chord.
    static constexpr int keyGapMs = 10;

private:
    void createSession();
    void selectDevices(const QString& session);
    void startSession(const QString& session);
    void sendNext();

    QDBusConnection bus_;
    std::filesystem::path tokenFile_;
    LogLine log_;
    uint version_ = 1;
    QString session_;                // set once the portal has started it
    std::deque<KeyStroke> pending_;  // the first is on its way
};

}  // namespace tevra
