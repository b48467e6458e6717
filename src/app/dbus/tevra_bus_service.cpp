#include "app/dbus/tevra_bus_service.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QThread>

namespace tevra {

TevraBusService::Claim TevraBusService::claimName() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()) {
        return Claim::noBus;
    }
    const auto reply =
        bus.interface()->registerService(serviceName, QDBusConnectionInterface::DontQueueService,
                                         QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid()) {
        return Claim::noBus;
    }
    return reply.value() == QDBusConnectionInterface::ServiceRegistered ? Claim::owned
                                                                        : Claim::takenByAnother;
}

bool TevraBusService::askRunningToShowWindow(std::string& refusal) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    // The first Tevra takes its name before it has put its object on the
    // bus: a second one started in that moment asks again, briefly.
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        QDBusMessage call =
            QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, "ShowWindow");
        const QDBusMessage reply = bus.call(call, QDBus::Block, 5000);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            return true;
        }
        if (reply.errorName() == refusedError) {
            refusal = reply.errorMessage().toStdString();
            return true;
        }
        if (waited.elapsed() > 2000) {
            refusal = reply.errorMessage().toStdString();
            return false;
        }
        QThread::msleep(50);
    }
}

TevraBusService::TevraBusService(std::shared_ptr<RemoteControl> control, QObject* parent)
    : QObject(parent), control_(std::move(control)), lastState_(state()) {}

bool TevraBusService::publish() {
    return QDBusConnection::sessionBus().registerObject(objectPath, this,
                                                        QDBusConnection::ExportAllSlots |
                                                            QDBusConnection::ExportAllProperties |
                                                            QDBusConnection::ExportAllSignals);
}

QString TevraBusService::state() const {
    return QString::fromStdString(control_->state());
}

QString TevraBusService::notetakerState() const {
    return QString::fromStdString(control_->notetakerState());
}

void TevraBusService::stateMayHaveChanged() {
    const QString now = state();
    if (now != lastState_) {
        lastState_ = now;
        emit StateChanged(now);
    }
}

void TevraBusService::answer(const RemoteControl::Answer& refusal) {
    if (refusal && calledFromDBus()) {
        sendErrorReply(refusedError, QString::fromStdString(*refusal));
    }
}

void TevraBusService::ShowWindow() {
    answer(control_->showWindow());
}

void TevraBusService::StartCapture(int slot) {
    answer(control_->startCapture(slot));
}

void TevraBusService::FinishCapture() {
    answer(control_->finishCapture());
}

void TevraBusService::ToggleCapture(int slot) {
    answer(control_->toggleCapture(slot));
}

void TevraBusService::CancelCapture() {
    answer(control_->cancelCapture());
}

void TevraBusService::TranslateSelection() {
    answer(control_->translateSelection());
}

void TevraBusService::TranslateClipboard() {
    answer(control_->translateClipboard());
}

void TevraBusService::SelectText() {
    answer(control_->selectText());
}

void TevraBusService::ClipQueueAdd() {
    answer(control_->clipQueueAdd());
}

void TevraBusService::ClipQueuePaste() {
    answer(control_->clipQueuePaste());
}

void TevraBusService::ClipQueueMode() {
    answer(control_->clipQueueMode());
}

void TevraBusService::StartNotes(const QString& app) {
    answer(control_->startNotes(app.toStdString()));
}

void TevraBusService::StopNotes() {
    answer(control_->stopNotes());
}

}  // namespace tevra
