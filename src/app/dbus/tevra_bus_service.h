#pragma once

#include <QDBusContext>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>
#include <string>

#include "app/remote_control.h"

namespace tevra {

// Tevra on the D-Bus session bus: the well-known name com.kestrum.Tevra, the
// object /com/kestrum/Tevra and the interface com.kestrum.Tevra1 (described
// in data/com.kestrum.Tevra1.xml). Each method answers at once; a refusal is
// the error com.kestrum.Tevra1.Error.Refused with the reason as its message.
// Main thread only.
class TevraBusService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.kestrum.Tevra1")
    Q_PROPERTY(QString State READ state)
    Q_PROPERTY(QString NotetakerState READ notetakerState)
    Q_PROPERTY(QString Paths READ paths)

public:
    static constexpr const char* serviceName = "com.kestrum.Tevra";
    static constexpr const char* objectPath = "/com/kestrum/Tevra";
    static constexpr const char* interfaceName = "com.kestrum.Tevra1";
    static constexpr const char* refusedError = "com.kestrum.Tevra1.Error.Refused";

    enum class Claim { owned, takenByAnother, noBus };

    // Asks the session bus for the name, without waiting in line for it.
    static Claim claimName();
    // Asks the Tevra that owns the name to show its main window; false when
    // none answered. Its reason for a refusal, if any, goes to refusal.
    static bool askRunningToShowWindow(std::string& refusal);

    explicit TevraBusService(std::shared_ptr<RemoteControl> control, QObject* parent = nullptr);
    // Puts the object on the bus; false when the bus refused it.
    bool publish();

    QString state() const;
    QString notetakerState() const;
    // The session and the ways in Tevra takes there, where it has a choice
    // (Wayland); empty on X11.
    QString paths() const { return paths_; }
    void setPaths(const std::string& paths) { paths_ = QString::fromStdString(paths); }

    // Emits StateChanged when the capture's state has changed.
    void stateMayHaveChanged();

public slots:
    void ShowWindow();
    void StartCapture(int slot);
    void FinishCapture();
    void ToggleCapture(int slot);
    void CancelCapture();
    void TranslateSelection();
    void TranslateClipboard();
    void SelectText();
    void ClipQueueAdd();
    void ClipQueuePaste();
    void ClipQueueMode();
    void StartNotes(const QString& app);
    void StopNotes();

signals:
    void StateChanged(const QString& state);

private:
    void answer(const RemoteControl::Answer& answer);

    std::shared_ptr<RemoteControl> control_;
    QString lastState_;
    QString paths_;
};

}  // namespace tevra
