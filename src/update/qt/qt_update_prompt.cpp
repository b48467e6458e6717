#include "update/qt/qt_update_prompt.h"

#include <QDesktopServices>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace tevra {

bool QtUpdatePrompt::askToDownload(const UpdateOffer& offer) {
    QMessageBox box;
    box.setIcon(QMessageBox::Information);
    box.setWindowTitle(QStringLiteral("Tevra"));
    box.setText(QString::fromStdString(offer.message));
    box.setInformativeText(QString::fromStdString(offer.informative));
    QPushButton* download = box.addButton(QStringLiteral("Download"), QMessageBox::AcceptRole);
    QPushButton* later = box.addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
    box.setDefaultButton(download);
    box.setEscapeButton(later);
    box.exec();
    return box.clickedButton() == download;
}

void QtUpdatePrompt::openURL(const std::string& url) {
    const QUrl target(QString::fromStdString(url), QUrl::StrictMode);
    if (target.isValid()) {
        QDesktopServices::openUrl(target);
    }
}

}  // namespace tevra
